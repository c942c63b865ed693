// SPDX-License-Identifier: MIT
//
// "vokctl users" as people and scripts call it.
#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <regex>
#include <sstream>

#include "tests/support/vokserve.h"

namespace {

using Strings = std::vector<std::string>;

constexpr const char* kDone = "/stubs/done";

class UsersCommand : public root::ServedTest {
  protected:
    static void stubUsers(const Strings& names)
    {
        std::string answer;
        for (const std::string& name : names) {
            answer += "<username>" + name + "</username>\n";
        }
        root::writeFile("/stubs/users", answer);
        stubAddition("printf '<%s>' \"$@\" >>/stubs/done");
    }

    /// Has the user script do this when it is told to add somebody.
    static void stubAddition(const std::string& script)
    {
        root::stub("php", "case $2 in\ntovGetUsers) cat /stubs/users >\"$3\" ;;\n*) " + script +
                              " ;;\nesac");
    }

    /// Calls "vokctl users" with these bytes on standard input.
    static root::Ended call(const std::string& command, const std::string& name,
                            const std::string& input, const std::vector<std::string>& options = {})
    {
        root::writeFile("/stubs/input", input);
        std::vector<std::string> words = {"/usr/bin/sh",
                                          "-c",
                                          "exec \"$@\" </stubs/input",
                                          "sh",
                                          root::built("vokctl"),
                                          "users",
                                          command,
                                          name,
                                          "--socket",
                                          "/tmp/socket"};
        words.insert(words.end(), options.begin(), options.end());
        return root::run(words);
    }

    static root::Ended create(const std::string& name, const std::string& input)
    {
        return call("create", name, input);
    }

    static void expectRefusal(const std::string& name, const std::string& password,
                              const std::string& sentence)
    {
        expectEnd(create(name, password + "\n"), 1, "", "vokctl: " + sentence + "\n");
    }
};

// ---- list -------------------------------------------------------------------------------------

TEST_F(UsersCommand, namesComeOneALine)
{
    stubUsers({"bob", "\xC3\x89lise"});
    expectEnd(vokctl({"users", "list"}), 0, "bob\n\xC3\x89lise\n", "");
    stubUsers({});
    expectEnd(vokctl({"users", "list"}), 0, "", "");
}

TEST_F(UsersCommand, jsonIsForPrograms)
{
    stubUsers({"bob", "\xC3\x89lise"});
    expectEnd(vokctl({"users", "list", "--json"}), 0,
              "{\n  \"users\": [\n    \"bob\",\n    \"\\u00c9lise\"\n  ]\n}\n", "");
    stubUsers({});
    expectEnd(vokctl({"users", "list", "--json"}), 0, "{\n  \"users\": []\n}\n", "");
}

TEST_F(UsersCommand, hostileNamesNeverReachTheTerminalRaw)
{
    stubUsers({"a\x1B[2Jz"});
    expectEnd(vokctl({"users", "list"}), 0, "a\\u{1b}[2Jz\n", "");
    expectEnd(create("\xE2\x80\xAEtxt\x80", "secret\n"), 0, "",
              "vokctl: the user \\u{202e}txt\\x80 was created\n");
}

TEST_F(UsersCommand, twoHundredNames)
{
    Strings names;
    std::string output;
    for (int i = 0; i < 200; ++i) {
        names.push_back("user" + std::to_string(i));
        output += names.back() + "\n";
    }
    stubUsers(names);
    expectEnd(vokctl({"users", "list"}), 0, output, "");
}

TEST_F(UsersCommand, listIsRefusedInWords)
{
    // The list cannot be made where a folder stands in its place that is not empty; what is there
    // is then read, and cannot be removed.
    root::stub("php", ": >\"$3\"");
    ASSERT_EQ(root::run({"mkdir", "-p", "/tmp/vokcontrol.tmp/inside"}).exitCode, 0);
    expectEnd(vokctl({"users", "list"}), 1, "",
              "vokctl: The appliance's work file cannot be removed; see whether the disk for its "
              "work files is full. (0xFF000006)\n");
}

// ---- create -----------------------------------------------------------------------------------

TEST_F(UsersCommand, accountIsCreatedWithThePasswordFromStandardInput)
{
    stubUsers({"anna"});
    expectEnd(create("carla", "a secret\nanother line\n"), 0, "",
              "vokctl: the user carla was created\n");
    EXPECT_EQ(root::readFile(kDone), "</etc/inc/api_user.php><tovAddUser><carla><a secret>");
}

TEST_F(UsersCommand, nameAndPasswordReachTheScriptByteForByte)
{
    stubUsers({"anna"});
    const std::string name = "\xC3\x89\xFE ._-+@" + std::string(23, 'n');
    const std::string password = " \xE9#&%$;|<>(){}[]*?!~^/" + std::string(10, 'p');
    ASSERT_EQ(name.size(), 32U);
    ASSERT_EQ(password.size(), 32U);
    EXPECT_EQ(create(name, password).exitCode, 0);
    EXPECT_EQ(root::readFile(kDone),
              "</etc/inc/api_user.php><tovAddUser><" + name + "><" + password + ">");
}

TEST_F(UsersCommand, emptyPasswordIsOneOnlyIfThatIsSaid)
{
    stubUsers({"anna"});
    for (const char* command : {"create", "verify"}) {
        expectEnd(call(command, "carla", "\n"), 2, "",
                  "vokctl: the password is empty; if it is meant to be: --empty-password\n");
    }
    EXPECT_FALSE(root::exists(kDone));
    EXPECT_EQ(call("create", "carla", "\n", {"--empty-password"}).exitCode, 0);
    EXPECT_EQ(root::readFile(kDone), "</etc/inc/api_user.php><tovAddUser><carla><>");
}

TEST_F(UsersCommand, createIsRefusedInWordsBeforeAnythingIsDone)
{
    stubUsers({"anna"});
    const std::string taken =
        "A user of this name exists already, or the name is reserved. (0x10000001)";
    for (const char* name : {"anna", "guest", "Config", "LOST+FOUND", "root", "Homes"}) {
        expectRefusal(name, "secret", taken);
    }
    expectRefusal(std::string(33, 'n'), "secret",
                  "The user's name is longer than 32 bytes. (0x10000002)");
    expectRefusal("carla", std::string(33, 'p'),
                  "The password is longer than 32 bytes. (0x10000003)");
    const std::string character =
        "The name or the password has a character that cannot be used, such as a quote. A name "
        "cannot have : , = %, a blank at an end, or - @ + . at its start. (0xFF000003)";
    for (const char* name : {"a'b", "a\"b", "a/b", "$(reboot)", "\x1B[2J", "a:b", "@staff",
                             ".hidden", "a,b", "a ", "50%", "a=b"}) {
        expectRefusal(name, "secret", character);
    }
    for (const char* password : {"a'b", "a\"b", "a\\b", "$(reboot)", "`reboot`", "\x1B[2J"}) {
        expectRefusal("carla", password, character);
    }
    // A name with a hyphen at its start is no option only after "--".
    expectEnd(call("create", "--any-server", "secret\n", {"--", "-a"}), 1, "",
              "vokctl: " + character + "\n");
    EXPECT_FALSE(root::exists(kDone));
}

TEST_F(UsersCommand, createSaysThatTheListOfUsersCannotBeMade)
{
    stubUsers({"anna"});
    // The filtered list stands beside the script's own, with a 2 behind its name.
    root::stub("php", "[ \"$2\" = tovGetUsers ] || exit 0\n"
                      ": >\"${3}2\"; chmod 000 \"${3}2\"");
    const root::Ended ended = create("carla", "secret\n");
    EXPECT_EQ(ended.exitCode, 1);
    // The files have the number of the request's process.
    std::istringstream errors(
        std::regex_replace(ended.errors, std::regex("Existed[0-9]+"), "ExistedN"));
    Strings lines;
    for (std::string line; std::getline(errors, line);) {
        lines.push_back(line);
    }
    // The two programs of the shell line run at the same time.
    std::ranges::sort(lines);
    EXPECT_EQ(lines, (Strings{
                         "vokctl: The appliance says: cat: can't open 'isUserExistedN': No such "
                         "file or directory",
                         "vokctl: The appliance says: sh: 1: cannot create isUserExistedN: "
                         "Permission denied",
                         "vokctl: The appliance's user script did not list the users, so none was "
                         "created; vokctl doctor may say why. (0xFF000004)",
                     }));
}

TEST_F(UsersCommand, createTellsWhatTheScriptSays)
{
    stubUsers({"anna"});
    stubAddition("echo 'useradd: group users does not exist' >&2; exit 1");
    expectRefusal("carla", "secret",
                  "The appliance's user script did not create this user; vokctl doctor may say "
                  "why. (0x10000005)\n"
                  "vokctl: The appliance says: useradd: group users does not exist");
}

TEST_F(UsersCommand, createSaysThatTheScriptHasRefused)
{
    stubUsers({"anna"});
    stubAddition("exit 1");
    expectRefusal("carla", "secret",
                  "The appliance's user script did not create this user; vokctl doctor may say "
                  "why. (0x10000005)");
}

// ---- verify -----------------------------------------------------------------------------------

/// "wall" reads its file where the appliance keeps it, so that the file is put there.
class UsersVerify : public UsersCommand {
  protected:
    static constexpr const char* kPasswordFile = "/usr/private/smbpasswd";

    void SetUp() override
    {
        UsersCommand::SetUp();
        const std::string noHash(32, 'X');
        // The well-known hashes of "password" and of nothing.
        root::writeFile(kPasswordFile, "carla:1001:" + noHash +
                                           ":8846F7EAEE8FB117AD06BDD830B7586C:[U          ]:"
                                           "LCT-6B018D2C:\nempty:1002:" +
                                           noHash +
                                           ":31D6CFE0D16AE931B73C59D7E0C089C0:[U          ]:"
                                           "LCT-6B018D2C:\n");
    }

    void TearDown() override
    {
        std::filesystem::remove(kPasswordFile);
        UsersCommand::TearDown();
    }
};

TEST_F(UsersVerify, rightPasswordIsSaidToBeRight)
{
    const std::string good = "vokctl: the password is right\n";
    expectEnd(call("verify", "carla", "password\nanother line\n"), 0, "", good);
    expectEnd(call("verify", "CARLA", "password"), 0, "", good);
    expectEnd(call("verify", "empty", "\n", {"--empty-password"}), 0, "", good);
}

TEST_F(UsersVerify, wrongPasswordIsNotToldFromAnUnknownUser)
{
    const std::string refusal = "vokctl: The password is not this user's, or there is no such "
                                "user, or no password file. (0x00000001)\n";
    expectEnd(call("verify", "carla", "Password\n"), 1, "", refusal);
    expectEnd(call("verify", "carla", "\n", {"--empty-password"}), 1, "", refusal);
    expectEnd(call("verify", "nobody", "password\n"), 1, "", refusal);
    std::filesystem::remove(kPasswordFile);
    expectEnd(call("verify", "carla", "password\n"), 1, "", refusal);
}

// ---- All of them
// -------------------------------------------------------------------------------------

TEST_F(UsersCommand, handlerThatCrashesIsSaid)
{
    root::stub("php", "read -r pid comm state ppid group rest </proc/self/stat; kill -9 $group");
    const std::string complaint = "vokctl: The request's process failed before it answered; see "
                                  "the service's log. (0x53000002)\n";
    expectEnd(vokctl({"users", "list"}), 7, "", complaint);
    expectEnd(create("carla", "secret\n"), 7, "", complaint);
}

TEST_F(UsersCommand, slowApplianceIsWaitedForSoLong)
{
    root::stub("php", "sleep 3");
    expectEnd(vokctl({"users", "list", "--timeout", "1"}), 5, "",
              "vokctl: the service has not answered within 1 second. It may be busy; try again, or "
              "raise --timeout.\n");
}

// ---- Without a service ------------------------------------------------------------------------

/// The same without a service: whatever is sent all the same ends with 3.
class UsersWithoutService : public UsersCommand {
  protected:
    void SetUp() override { root::UntracedTest::SetUp(); }
    void TearDown() override { root::UntracedTest::TearDown(); }

    static constexpr const char* kAway = "vokctl: cannot reach the service at /tmp/socket: No such "
                                         "file or directory. Is vokserve running?\n";
};

TEST_F(UsersWithoutService, newlineOrZeroByteIsWrongUsage)
{
    const std::string complaint =
        "vokctl: a name or a value cannot contain a newline or a zero byte\n";
    for (const char* command : {"create", "verify"}) {
        expectEnd(call(command, "car\nla", "secret\n"), 2, "", complaint);
        expectEnd(call(command, "carla", std::string("sec\0ret\n", 8)), 2, "", complaint);
    }
}

TEST_F(UsersWithoutService, withoutAPasswordNothingIsSent)
{
    for (const char* command : {"create", "verify"}) {
        expectEnd(call(command, "carla", ""), 2, "",
                  "vokctl: there is no password on standard input\n");
    }
}

TEST_F(UsersWithoutService, serviceThatIsAwayIsSaid)
{
    expectEnd(vokctl({"users", "list"}), 3, "", kAway);
    expectEnd(call("create", "carla", "secret\n"), 3, "", kAway);
    expectEnd(call("verify", "carla", "secret\n"), 3, "", kAway);
}

TEST_F(UsersWithoutService, wrongUsageEndsWithTwo)
{
    const std::vector<Strings> calls = {
        {"users"},
        {"users", "unknown"},
        {"users", "list", "extra"},
        {"users", "list", "--timeout", "0"},
        {"users", "create"},
        {"users", "create", "carla", "secret"},
        {"users", "verify"},
        {"users", "verify", "carla", "secret"},
    };
    for (const Strings& call : calls) {
        const root::Ended ended = vokctl(call);
        EXPECT_EQ(ended.exitCode, 2) << testing::PrintToString(call);
        EXPECT_EQ(ended.output, "");
        EXPECT_NE(ended.errors, "");
    }
}

} // namespace
