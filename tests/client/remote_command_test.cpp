// SPDX-License-Identifier: MIT
//
// "vokctl remote" as people and scripts call it.
#include <filesystem>
#include <gtest/gtest.h>

#include "tests/support/scripted_service.h"
#include "tests/support/vokserve.h"

namespace {

using root::Exchange;
using root::exchange;
using root::le32;
using Strings = std::vector<std::string>;

constexpr const char* kVariables = "/etc/pelconfig/system_var";
constexpr const char* kSwitchProgram = "/usr/bin/ra-enabled";
constexpr const char* kRegisterProgram = "/usr/bin/ractl";

class RemoteCommand : public root::AnsweringTest {
  protected:
    void TearDown() override
    {
        std::filesystem::remove(kSwitchProgram);
        std::filesystem::remove(kRegisterProgram);
        root::AnsweringTest::TearDown();
    }

    /// Has one of the two programs write down what it is told, and then do this.
    static void program(const std::string& path, const std::string& script)
    {
        root::writeFile(path, "#!/usr/bin/sh\nprintf '<%s>' \"$@\" >/stubs/told\n" + script + "\n");
        std::filesystem::permissions(path, std::filesystem::perms(0755));
    }

    static Strings remote(const Strings& arguments)
    {
        Strings whole = {"remote"};
        whole.insert(whole.end(), arguments.begin(), arguments.end());
        return whole;
    }

    /// Calls "vokctl remote"; it must end so, and have told this to one of the programs.
    static void expectDone(const Strings& arguments, const std::string& output,
                           const std::string& errors, const std::string& told)
    {
        std::filesystem::remove("/stubs/told");
        expectEnd(vokctl(remote(arguments)), 0, output, errors);
        EXPECT_EQ(root::readFile("/stubs/told"), told);
    }

    static void expectRefusal(const Strings& arguments, const std::string& sentence)
    {
        expectEnd(vokctl(remote(arguments)), 1, "", "vokctl: " + sentence + "\n");
    }

    static std::string value(std::uint32_t key, const std::string& text)
    {
        return "getv " + le32(key) + "\n" + text + "\n";
    }
};

const std::string kDone("\0\n\0\n", 4);
const Strings kAnna = {"anna", "anna@example.org", "Anna"};

Strings withAnna(const std::string& command)
{
    return {command, kAnna[0], kAnna[1], kAnna[2]};
}

// ---- urls -------------------------------------------------------------------------------------

TEST_F(RemoteCommand, bothAddressesAreAskedFor)
{
    const Exchange exchanged =
        exchange({"remote", "urls"}, {value(1, "https://up"), value(2, "https://in")});
    EXPECT_EQ(exchanged.frames, (Strings{"getv " + le32(1) + "\n" + le32(1) + "\n",
                                         "getv " + le32(1) + "\n" + le32(2) + "\n"}));
    expectEnd(exchanged.ended, 0, "Sign up:  https://up\nSign in:  https://in\n", "");
}

TEST_F(RemoteCommand, addressesAreShown)
{
    root::writeFile(kVariables, "ra_signUpUrl=https://up.example/a\n"
                                "ra_signInUrl=https://in.example/b?c=d\n");
    expectDone({"urls"}, "Sign up:  https://up.example/a\nSign in:  https://in.example/b?c=d\n", "",
               "");
    expectDone({"urls", "--json"},
               "{\n"
               "  \"sign_up\": \"https://up.example/a\",\n"
               "  \"sign_in\": \"https://in.example/b?c=d\"\n"
               "}\n",
               "", "");
}

TEST_F(RemoteCommand, hostileAddressesNeverReachTheTerminalRaw)
{
    root::writeFile(kVariables, "ra_signUpUrl=a\x1B[2J\nra_signInUrl=\xFF\n");
    expectDone({"urls"}, "Sign up:  a\\u{1b}[2J\nSign in:  \\xff\n", "", "");
    expectDone({"urls", "--json"},
               "{\n  \"sign_up\": \"a\\u001b[2J\",\n  \"sign_in\": \"\\ufffd\"\n}\n", "", "");
}

TEST_F(RemoteCommand, missingAddressesAreSaidInWords)
{
    const std::string missing = "The appliance does not have this address. (0x00000001)";
    expectRefusal({"urls"}, missing);
    root::writeFile(kVariables, "ra_signUpUrl=https://up\nra_signInUrl=\n");
    expectRefusal({"urls"}, missing);
    root::writeFile(kVariables, "ra_signInUrl=https://in\n");
    expectRefusal({"urls", "--json"}, missing);
}

// ---- status -----------------------------------------------------------------------------------

TEST_F(RemoteCommand, statusIsAskedForOneOrForAll)
{
    const std::string one(1, '\1');
    const Exchange all = exchange({"remote", "status"}, {"wags system\n" + one + "\n"});
    EXPECT_EQ(all.frames, Strings{"wags " + le32(1) + "\nsystem\n"});
    expectEnd(all.ended, 0, "on\n", "");
    const Exchange user =
        exchange({"remote", "status", "anna"}, {"wags user\n" + std::string(1, '\0') + "\n"});
    EXPECT_EQ(user.frames, Strings{"wags " + le32(2) + "\nuser\nanna\n"});
    expectEnd(user.ended, 0, "off\n", "");
}

TEST_F(RemoteCommand, systemIsOnWhereItsVariableBeginsWithOne)
{
    for (const char* variables : {"raclient_raenabled=1\n", "raclient_raenabled=10\n"}) {
        root::writeFile(kVariables, variables);
        expectDone({"status"}, "on\n", "", "");
    }
    for (const char* variables :
         {"", "raclient_raenabled=\n", "raclient_raenabled=0\n", "raclient_raenabled=yes\n"}) {
        root::writeFile(kVariables, variables);
        expectDone({"status"}, "off\n", "", "");
    }
}

TEST_F(RemoteCommand, programTellsWhetherAUserIsOn)
{
    program(kSwitchProgram, "exit 0");
    expectDone({"status", "anna"}, "on\n", "", "<get><anna>");
    program(kSwitchProgram, "exit 1");
    expectDone({"status", "Anna Lee"}, "off\n", "", "<get><Anna Lee>");
}

TEST_F(RemoteCommand, statusIsRefusedInWords)
{
    const std::string failed = "The appliance's remote-access program has failed, or the request "
                               "is malformed. (0x00000002)";
    program(kSwitchProgram, "exit 2");
    expectRefusal({"status", "anna"}, "The appliance cannot tell whether this user's remote access "
                                      "is on; see whether there is such a user. (0x00000001)");
    for (const char* script : {"exit 3", "exit 127"}) {
        program(kSwitchProgram, script);
        expectRefusal({"status", "anna"}, failed);
    }
    program(kSwitchProgram, "kill -9 $$");
    expectRefusal({"status", "anna"}, failed + "\nvokctl: The appliance says: Killed");
    std::filesystem::remove(kSwitchProgram);
    expectRefusal({"status", "anna"}, failed + "\nvokctl: The appliance says: sh: 1: " +
                                          kSwitchProgram + ": not found");
    program(kSwitchProgram, "exit 0");
    std::filesystem::remove("/stubs/told");
    expectRefusal({"status", "\"; reboot \""}, failed);
    EXPECT_FALSE(root::exists("/stubs/told"));
}

// ---- register ---------------------------------------------------------------------------------

TEST_F(RemoteCommand, registrationGoesInThreeLines)
{
    const Exchange exchanged = exchange(remote(withAnna("register")), {"warp " + kDone});
    EXPECT_EQ(exchanged.frames, Strings{"warp " + le32(3) + "\nanna\nanna@example.org\nAnna\n"});
    expectEnd(exchanged.ended, 0, "", "vokctl: the user was registered\n");
}

/// The second and the third value come with their newlines.
TEST_F(RemoteCommand, userIsRegistered)
{
    program(kRegisterProgram, "exit 0");
    const std::string registered = "vokctl: the user was registered\n";
    expectDone(withAnna("register"), "", registered,
               "<registerUser><anna><anna@example.org\n><Anna\n>");
    expectDone({"register", "a b", "", "$HOME `x` \" '"}, "", registered,
               "<registerUser><a b><\n><$HOME `x` \" '\n>");
}

TEST_F(RemoteCommand, registrationIsRefusedInWords)
{
    for (const char* script : {"exit 1", "exit 2", "exit 127"}) {
        program(kRegisterProgram, script);
        expectRefusal(withAnna("register"),
                      "The remote-access service did not register this user. (0x00000001)");
    }
    program(kRegisterProgram, "kill -9 $$");
    expectRefusal(withAnna("register"), "The appliance's remote-access program could not be run, "
                                        "or a value is missing. (0x00000003)");
    std::filesystem::remove(kRegisterProgram);
    expectRefusal(withAnna("register"),
                  "The remote-access service did not register this user. (0x00000001)");
}

// ---- enable -----------------------------------------------------------------------------------

TEST_F(RemoteCommand, switchingGoesInThreeLinesAndAByte)
{
    const Exchange enabled = exchange(remote(withAnna("enable")), {"wasu " + kDone});
    EXPECT_EQ(enabled.frames, Strings{"wasu " + le32(4) + "\nanna\nanna@example.org\nAnna\n\1\n"});
    expectEnd(enabled.ended, 0, "", "vokctl: the user's remote access is on now\n");
    const Exchange disabled = exchange({"remote", "disable", "anna"}, {"wasu " + kDone});
    EXPECT_EQ(disabled.frames,
              Strings{"wasu " + le32(4) + "\nanna\n\n\n" + std::string("\0\n", 2)});
    expectEnd(disabled.ended, 0, "", "vokctl: the user's remote access is off now\n");
}

TEST_F(RemoteCommand, userIsSwitchedOnByRegistering)
{
    program(kRegisterProgram, "exit 0");
    program(kSwitchProgram, "exit 1");
    expectDone(withAnna("enable"), "", "vokctl: the user's remote access is on now\n",
               "<registerUser><anna><anna@example.org><Anna>");
}

TEST_F(RemoteCommand, switchingOnIsRefusedInWords)
{
    const std::string refused =
        "The remote-access service did not do this for this user. (0x00000001)";
    for (const char* script : {"exit 1", "exit 2", "exit 127"}) {
        program(kRegisterProgram, script);
        expectRefusal(withAnna("enable"), refused);
    }
    program(kRegisterProgram, "kill -9 $$");
    expectRefusal(
        withAnna("enable"),
        "The appliance's remote-access program has failed, or a value is missing. (0x00000003)");
    std::filesystem::remove(kRegisterProgram);
    expectRefusal(withAnna("enable"), refused);
}

// ---- disable ----------------------------------------------------------------------------------

TEST_F(RemoteCommand, userIsSwitchedOff)
{
    program(kSwitchProgram, "exit 0");
    program(kRegisterProgram, "exit 1");
    expectDone({"disable", "Anna Lee"}, "", "vokctl: the user's remote access is off now\n",
               "<set><Anna Lee><off>");
}

TEST_F(RemoteCommand, switchingOffIsRefusedInWords)
{
    program(kSwitchProgram, "exit 2");
    expectRefusal({"disable", "anna"},
                  "The remote-access service did not do this for this user. (0x00000001)");
    const std::string failed =
        "The appliance's remote-access program has failed, or a value is missing. (0x00000003)";
    for (const char* script : {"exit 1", "exit 3"}) {
        program(kSwitchProgram, script);
        expectRefusal({"disable", "anna"}, failed);
    }
    program(kSwitchProgram, "kill -9 $$");
    expectRefusal({"disable", "anna"}, failed + "\nvokctl: The appliance says: Killed");
    program(kSwitchProgram, "exit 0");
    std::filesystem::remove("/stubs/told");
    expectRefusal({"disable", "\"; reboot \""}, failed);
    EXPECT_FALSE(root::exists("/stubs/told"));
}

// ---- All of them ------------------------------------------------------------------------------

TEST_F(RemoteCommand, answersThatTellNothingAreSaidInWords)
{
    expectEnd(exchange({"remote", "urls"}, {"erro " + le32(2)}).ended, 1, "",
              "vokctl: The appliance does not have a value with this key. (0x00000002)\n");
    expectEnd(exchange({"remote", "urls"}, {"erro " + le32(3)}).ended, 1, "",
              "vokctl: The key is malformed. (0x00000003)\n");
}

TEST_F(RemoteCommand, otherAnswersCannotBeRead)
{
    const std::string empty =
        "empty: the command was ignored, is not known, or failed before it answered";
    const std::string shapeless = "of a shape that this client does not know";
    const std::vector<std::pair<Strings, std::string>> answers = {
        {{"urls"}, "getv " + le32(1) + "\nhttps://up"},
        {{"urls"}, value(2, "https://in")},
        {{"status"}, "wags user\n\1\n"},
        {{"status"}, "wags system\n\2\n"},
        {{"status"}, "wags system\n\xFF\n"},
        {{"status"}, "wags system\n\1"},
        {{"status"}, "wags system\n\1\n\n"},
        {{"status"}, "wags system\n"},
        {withAnna("register"), "warp " + kDone.substr(1)},
        {withAnna("register"), "warp " + kDone + "x"},
        {withAnna("enable"), "wasu "},
        {withAnna("enable"), "warp " + kDone},
        {{"disable", "anna"}, "wasu \1\n\1\n"},
        {{"disable", "anna"}, ""},
    };
    for (const auto& [arguments, answer] : answers) {
        const root::Ended ended = exchange(remote(arguments), {answer}).ended;
        EXPECT_EQ(ended.exitCode, 7) << answer;
        EXPECT_EQ(ended.output, "");
        EXPECT_EQ(ended.errors.find("vokctl: the answer cannot be read: "), 0U) << ended.errors;
    }
}

TEST_F(RemoteCommand, newlinesCannotBeSent)
{
    for (const Strings& arguments : std::vector<Strings>{{"status", "a\nb"},
                                                         {"disable", "a\n"},
                                                         {"enable", "a", "b\n", "c"},
                                                         {"enable", "a", "b", "\n"},
                                                         {"register", "\n", "b", "c"}}) {
        expectEnd(vokctl(remote(arguments)), 2, "",
                  "vokctl: a name or a value cannot contain a newline or a zero byte\n");
    }
}

TEST_F(RemoteCommand, textsThatWouldRunIntoTheNextLineAreWrongUsage)
{
    const std::string longText(254, 'a');
    for (const Strings& arguments : std::vector<Strings>{{"status", longText},
                                                         {"disable", longText},
                                                         {"enable", "a", longText, "c"},
                                                         {"register", "a", "b", longText}}) {
        expectEnd(vokctl(remote(arguments)), 2, "",
                  "vokctl: a name or a value has more than 253 bytes\n");
    }
}

TEST_F(RemoteCommand, unreachableServiceAndWrongUsage)
{
    const std::vector<Strings> commands = {{"urls"},           {"status"},
                                           {"status", "anna"}, {"disable", "anna"},
                                           withAnna("enable"), withAnna("register")};
    for (const Strings& command : commands) {
        Strings arguments = remote(command);
        arguments.insert(arguments.begin(), root::built("vokctl"));
        arguments.insert(arguments.end(), {"--socket", "/tmp/none"});
        expectEnd(root::run(arguments), 3, "",
                  "vokctl: cannot reach the service at /tmp/none: No such file or directory. Is "
                  "vokserve running?\n");
        arguments = remote(command);
        arguments.insert(arguments.end(), {"two", "more"});
        EXPECT_EQ(vokctl(arguments).exitCode, 2);
    }
    for (const Strings& command : std::vector<Strings>{{},
                                                       {"disable"},
                                                       {"enable", "anna"},
                                                       {"register", "anna", "first"},
                                                       {"enable", "anna", "first"},
                                                       {"status", "--json"},
                                                       {"other"}}) {
        EXPECT_EQ(vokctl(remote(command)).exitCode, 2);
    }
}

} // namespace
