// SPDX-License-Identifier: MIT
//
// "vokctl shares" as people and scripts call it.
#include <gtest/gtest.h>

#include "tests/support/vokserve.h"

namespace {

using Strings = std::vector<std::string>;

constexpr const char* kDone = "/stubs/done";

class SharesCommand : public root::ServedTest {
  protected:
    void SetUp() override
    {
        root::ServedTest::SetUp();
        // What the scripts were told to do, a line each.
        stubScripts("printf '<%s>' \"$@\" >>/stubs/done; echo >>/stubs/done");
        root::writeFile("/stubs/users", "<username>anna</username>\n<username>config</username>\n");
        listShares({{"Documents", "public"}, {"Projects", "private"}});
    }

    /// Has both scripts answer what they are asked; whatever else they are told, this script does.
    static void stubScripts(const std::string& otherwise)
    {
        root::stub("php", "case $2 in\n"
                          "tovGetShareList) cat /stubs/listing >\"$3\" ;;\n"
                          "tovGetUsers) cat /stubs/users >\"$3\" ;;\n"
                          "*) " +
                              otherwise + " ;;\nesac");
    }

    using Shares = std::vector<std::pair<std::string, std::string>>;

    static void listShares(const Shares& shares)
    {
        std::string listing;
        for (const auto& [name, property] : shares) {
            listing += "  <shareinfo>\n  <sharename>" + name + "</sharename>\n  <shareproperty>" +
                       property + "</shareproperty>\n  <sharelocation>internal</sharelocation>\n" +
                       "  </shareinfo>\n";
        }
        root::writeFile("/stubs/listing", listing);
    }

    static Strings shares(const Strings& arguments)
    {
        Strings whole = {"shares"};
        whole.insert(whole.end(), arguments.begin(), arguments.end());
        return whole;
    }

    /// Calls "vokctl shares"; it must be refused with this sentence.
    static void expectRefusal(const Strings& arguments, const std::string& sentence)
    {
        expectEnd(vokctl(shares(arguments)), 1, "", "vokctl: " + sentence + "\n");
    }
};

// ---- list -------------------------------------------------------------------------------------

TEST_F(SharesCommand, listIsATable)
{
    listShares({{"Documents", "public"}, {"\xC3\x89\x63onomies", "private"}, {"A B", "public"}});
    expectEnd(vokctl({"shares", "list"}), 0,
              "SHARE      PROPERTY\n"
              "Documents  public\n"
              "\xC3\x89\x63onomies  private\n"
              "A B        public\n",
              "");
    listShares({});
    expectEnd(vokctl({"shares", "list"}), 0, "SHARE  PROPERTY\n", "");
}

TEST_F(SharesCommand, listIsJsonForPrograms)
{
    listShares({{"Documents", "public"}, {"\xC3\x89 \xFF", "private"}});
    expectEnd(vokctl({"shares", "list", "--json"}), 0,
              "{\n"
              "  \"shares\": [\n"
              "    {\n"
              "      \"name\": \"Documents\",\n"
              "      \"property\": \"public\"\n"
              "    },\n"
              "    {\n"
              "      \"name\": \"\\u00c9 \\ufffd\",\n"
              "      \"property\": \"private\"\n"
              "    }\n"
              "  ]\n"
              "}\n",
              "");
    listShares({});
    expectEnd(vokctl({"shares", "list", "--json"}), 0, "{\n  \"shares\": []\n}\n", "");
}

TEST_F(SharesCommand, listHasTwoHundredShares)
{
    Shares shares;
    std::string output = "SHARE        PROPERTY\n";
    for (int i = 100; i < 300; ++i) {
        shares.emplace_back("Archive " + std::to_string(i), "public");
        output += shares.back().first + "  public\n";
    }
    listShares(shares);
    expectEnd(vokctl({"shares", "list"}), 0, output, "");
}

TEST_F(SharesCommand, listIsRefusedInWords)
{
    root::stub("php", "exit 1");
    expectRefusal(
        {"list"},
        "A script or a tool of the appliance has failed; vokctl doctor may say why. (0xFF000004)");
    root::stub("php", "case $3 in *cmd_lsts*) rm -f \"$3\" ;; *) : >\"$3\" ;; esac");
    expectRefusal({"list"}, "The appliance's work file cannot be opened; see whether the disk for "
                            "its work files is full. (0xFF000007)");
    // A folder can be opened, but it is not removed as a file is.
    root::stub("php", "case $3 in *cmd_lsts*) rm -f \"$3\"; mkdir -p \"$3/inside\" ;; "
                      "*) : >\"$3\" ;; esac");
    expectRefusal({"list"}, "The appliance's work file cannot be removed; see whether the disk for "
                            "its work files is full. (0xFF000006)");
}

// ---- show -------------------------------------------------------------------------------------

TEST_F(SharesCommand, showTellsTheProperty)
{
    expectEnd(vokctl({"shares", "show", "Documents"}), 0, "public\n", "");
    expectEnd(vokctl({"shares", "show", "Projects"}), 0, "private\n", "");
    expectEnd(vokctl({"shares", "show", "Projects", "--json"}), 0,
              "{\n  \"name\": \"Projects\",\n  \"property\": \"private\"\n}\n", "");
}

TEST_F(SharesCommand, showFindsTheShareItselfAmongThoseThatHoldItsName)
{
    listShares({{"data", "public"}, {"mydata", "private"}, {"database", "private"}});
    expectEnd(vokctl({"shares", "show", "data"}), 0, "public\n", "");
    listShares({{"mydata", "private"}, {"Data", "public"}});
    expectRefusal({"show", "data"},
                  "there is no share data; \"vokctl shares list\" shows all shares");
}

TEST_F(SharesCommand, showHasNoShareOfAnotherName)
{
    for (const char* name : {"Media", "documents", "Documents ", "sharename"}) {
        expectRefusal({"show", name}, std::string("there is no share ") + name +
                                          "; \"vokctl shares list\" shows all shares");
    }
    expectRefusal({"show", "--json", "Media"},
                  "there is no share Media; \"vokctl shares list\" shows all shares");
}

TEST_F(SharesCommand, showTakesNamesOfOneToSixtyFourBytes)
{
    const std::string longest(64, 'x');
    listShares({{longest, "private"}});
    expectEnd(vokctl({"shares", "show", longest}), 0, "private\n", "");
    expectEnd(vokctl({"shares", "show", "x"}), 1, "",
              "vokctl: there is no share x; \"vokctl shares list\" shows all shares\n");
    const std::string refusal = "The share's name does not have 1 to 64 bytes, or has a character "
                                "that cannot be used. (0xC1000003)";
    expectRefusal({"show", longest + "x"}, refusal);
    expectRefusal({"show", ""}, refusal);
}

TEST_F(SharesCommand, showIsRefusedInWords)
{
    root::stub("php", "exit 1");
    expectRefusal(
        {"show", "Media"},
        "A script or a tool of the appliance has failed; vokctl doctor may say why. (0xFF000004)");
    root::stub("php", ":");
    expectRefusal({"show", "Media"}, "The appliance's work file cannot be opened; see whether the "
                                     "disk for its work files is full. (0xFF000007)");
    root::stub("php", "mkdir -p \"$3/inside\"");
    expectRefusal({"show", "Media"}, "The command takes one parameter, or the appliance's work "
                                     "file cannot be removed. (0xC1000001)");
}

// ---- public-name ------------------------------------------------------------------------------

TEST_F(SharesCommand, publicNameIsPrinted)
{
    root::writeFile("/etc/pelconfig/system_var", "other=x\npel_pubshare_name=Family Videos\n");
    expectEnd(vokctl({"shares", "public-name"}), 0, "Family Videos\n", "");
}

TEST_F(SharesCommand, publicNameMayLookLikeAnError)
{
    root::writeFile("/etc/pelconfig/system_var", "pel_pubshare_name=Cerro Sur\n");
    expectEnd(vokctl({"shares", "public-name"}), 0, "Cerro Sur\n", "");
}

TEST_F(SharesCommand, publicNameThatIsNotSetIsNoData)
{
    const std::string complaint = "vokctl: the appliance has no name for its public share\n";
    expectEnd(vokctl({"shares", "public-name"}), 6, "", complaint);
    root::writeFile("/etc/pelconfig/system_var", "pel_pubshare_name=\n");
    expectEnd(vokctl({"shares", "public-name"}), 6, "", complaint);
}

// ---- create -----------------------------------------------------------------------------------

TEST_F(SharesCommand, publicShareIsCreated)
{
    expectEnd(vokctl({"shares", "create", "Music", "--public"}), 0, "",
              "vokctl: the share Music was created\n");
    EXPECT_EQ(root::readFile(kDone), "</etc/inc/api_share.php><tovAddShare><Music><public>\n");
}

TEST_F(SharesCommand, privateShareIsCreatedForItsUser)
{
    expectEnd(vokctl({"shares", "create", "Tax papers", "--for", "anna"}), 0, "",
              "vokctl: the share Tax papers was created\n");
    EXPECT_EQ(root::readFile(kDone),
              "</etc/inc/api_share.php><tovAddShare><Tax papers><private>\n"
              "</etc/inc/api_share.php><tovSetUserSharePrivileges><anna><Tax papers><full>\n");
}

TEST_F(SharesCommand, nameReachesTheScriptByteForByte)
{
    // The longest name that may be, one that marks public shares on their way, and blanks.
    const std::string longest = "\xC3\x89\xFF._-+@" + std::string(56, 'x');
    ASSERT_EQ(longest.size(), 64U);
    std::string done;
    for (const std::string& name : {longest, std::string("guest"), std::string("a  b")}) {
        EXPECT_EQ(vokctl({"shares", "create", name, "--public"}).exitCode, 0);
        done += "</etc/inc/api_share.php><tovAddShare><" + name + "><public>\n";
        EXPECT_EQ(root::readFile(kDone), done);
    }
}

TEST_F(SharesCommand, createWantsToKnowForWhom)
{
    const std::string complaint =
        "vokctl: say for whom the share is: either --public or --for USER\n";
    expectEnd(vokctl({"shares", "create", "Music"}), 2, "", complaint);
    expectEnd(vokctl({"shares", "create", "Music", "--public", "--for", "anna"}), 2, "", complaint);
    EXPECT_EQ(root::readFile(kDone), "");
    expectEnd(vokctl({"shares", "create"}), 2, "",
              "vokctl: NAME is required.\nSee \"vokctl shares create --help\".\n");
}

TEST_F(SharesCommand, createIsRefusedInWordsBeforeAnythingIsDone)
{
    const std::string taken =
        "A share of this name exists already, or the name is reserved. (0x20000001)";
    const std::string tooLong = "The share's name is longer than 64 bytes. (0x20000003)";
    const std::string noUser = "There is no user of this name, or it is reserved. (0x20000006)";
    const std::vector<std::pair<Strings, std::string>> refusals = {
        {{"create", "Documents", "--public"}, taken},
        {{"create", "dOCUMENTS", "--for", "anna"}, taken},
        {{"create", "Lost+Found", "--public"}, taken},
        {{"create", "CONFIG", "--for", "anna"}, taken},
        {{"create", "global", "--public"}, taken},
        {{"create", "Printers", "--for", "anna"}, taken},
        {{"create", std::string(65, 'x'), "--public"}, tooLong},
        {{"create", std::string(65, 'x'), "--for", "anna"}, tooLong},
        {{"create", "Music", "--for", "nobody"}, noUser},
        {{"create", "Music", "--for", "Anna"}, noUser},
        {{"create", "Music", "--for", "config"}, noUser},
    };
    for (const auto& [arguments, sentence] : refusals) {
        expectRefusal(arguments, sentence);
    }
    const std::string publicName =
        "The share's name has a character that cannot be used, such as a quote or a slash, one of "
        ": , = %, a blank at an end, or - @ + . at its start. (0xFF000003)";
    const std::string privateName =
        "A name has a character that cannot be used, such as a quote or a slash. A share's cannot "
        "have : , = %, a blank at an end, or - @ + . at its start. (0xFF000003)";
    for (const char* name : {"a'b", "a\"b", "a/b", "$(reboot)", "`reboot`", "\x1B[2J", "a:b", "a,b",
                             "a=b", "50%", "@a", "+a", ".a", " a", "a "}) {
        expectRefusal({"create", name, "--public"}, publicName);
        expectRefusal({"create", name, "--for", "anna"}, privateName);
    }
    // A name with a hyphen at its start is no option only after "--".
    expectEnd(root::run({root::built("vokctl"), "shares", "create", "--public", "--socket",
                         "/tmp/socket", "--", "-a"}),
              1, "", "vokctl: " + publicName + "\n");
    expectEnd(root::run({root::built("vokctl"), "shares", "create", "--for", "anna", "--socket",
                         "/tmp/socket", "--", "-a"}),
              1, "", "vokctl: " + privateName + "\n");
    EXPECT_FALSE(root::exists(kDone));
}

TEST_F(SharesCommand, createSaysThatTheScriptHasFailed)
{
    const std::string privateRefusal =
        "The appliance's share script did not create this share, or did not give it to this user; "
        "vokctl doctor may say why. (0xFF000004)";
    const auto expectBoth = [&] {
        expectRefusal({"create", "Music", "--public"},
                      "The appliance's share script did not create this share; vokctl doctor may "
                      "say why. (0xFF000004)");
        expectRefusal({"create", "Music", "--for", "anna"}, privateRefusal);
    };
    stubScripts("exit 1");
    expectBoth();
    root::stub("php", "[ \"$2\" = tovGetUsers ] && cat /stubs/users >\"$3\"");
    expectBoth();
    stubScripts("[ \"$2\" = tovAddShare ]");
    expectRefusal({"create", "Music", "--for", "anna"}, privateRefusal);
}

// ---- All of them ------------------------------------------------------------------------------

TEST_F(SharesCommand, hostileNamesNeverReachTheTerminalRaw)
{
    listShares({{"a\x1B[2Jz", "p\x1B[2Jublic"}, {"\xE2\x80\xAEtxt", "private"}});
    expectEnd(vokctl({"shares", "list"}), 0,
              "SHARE        PROPERTY\n"
              "a\\u{1b}[2Jz  p\\u{1b}[2Jublic\n"
              "\\u{202e}txt  private\n",
              "");
    expectEnd(vokctl({"shares", "show", "a\x1B[2Jz"}), 0, "p\\u{1b}[2Jublic\n", "");
    expectRefusal({"show", "\x1B[2J"},
                  "there is no share \\u{1b}[2J; \"vokctl shares list\" shows all shares");
    expectEnd(vokctl({"shares", "create", "\xE2\x80\xAEtxt\x80", "--public"}), 0, "",
              "vokctl: the share \\u{202e}txt\\x80 was created\n");
    root::writeFile("/etc/pelconfig/system_var", "pel_pubshare_name=a\x1B[2Jz\n");
    expectEnd(vokctl({"shares", "public-name"}), 0, "a\\u{1b}[2Jz\n", "");
}

TEST_F(SharesCommand, nameThatIsLongerThanARequestIsSaid)
{
    expectEnd(vokctl({"shares", "create", std::string(50000, 'x'), "--public"}), 2, "",
              "vokctl: The request is longer than 4096 bytes. (0x53000004)\n");
}

TEST_F(SharesCommand, handlerThatCrashesIsSaid)
{
    root::stub("php", "read -r pid comm state ppid group rest </proc/self/stat; kill -9 $group");
    for (const Strings& call : {Strings{"list"}, Strings{"create", "Music", "--public"}}) {
        expectEnd(vokctl(shares(call)), 7, "",
                  "vokctl: The request's process failed before it answered; see the service's log. "
                  "(0x53000002)\n");
    }
}

// ---- Without a service ------------------------------------------------------------------------

/// The same without a service: whatever is sent all the same ends with 3.
class SharesWithoutService : public SharesCommand {
  protected:
    void SetUp() override { root::UntracedTest::SetUp(); }
    void TearDown() override { root::UntracedTest::TearDown(); }

    static constexpr const char* kAway = "vokctl: cannot reach the service at /tmp/socket: No such "
                                         "file or directory. Is vokserve running?\n";
};

TEST_F(SharesWithoutService, newlineInANameIsWrongUsage)
{
    const std::vector<Strings> calls = {
        {"show", "a\nb"},
        {"create", "a\nb", "--public"},
        {"create", "a\nb", "--for", "anna"},
        {"create", "Music", "--for", "anna\n"},
    };
    for (const Strings& call : calls) {
        expectEnd(vokctl(shares(call)), 2, "",
                  "vokctl: a name or a value cannot contain a newline or a zero byte\n");
    }
}

TEST_F(SharesWithoutService, wrongUsageEndsWithTwo)
{
    const std::vector<Strings> calls = {
        {},
        {"unknown"},
        {"list", "extra"},
        {"list", "--timeout", "0"},
        {"show"},
        {"show", "Documents", "Projects"},
        {"public-name", "extra"},
        {"create"},
        {"create", "--public"},
        {"create", "Music"},
        {"create", "Music", "--for"},
        {"create", "Music", "--public", "--for", "anna"},
    };
    for (const Strings& call : calls) {
        const root::Ended ended = vokctl(shares(call));
        EXPECT_EQ(ended.exitCode, 2) << testing::PrintToString(call);
        EXPECT_EQ(ended.output, "");
        EXPECT_NE(ended.errors, "");
    }
}

TEST_F(SharesWithoutService, serviceThatIsAwayIsSaid)
{
    const std::vector<Strings> calls = {
        {"list"},
        {"show", "Documents"},
        {"public-name"},
        {"create", "Music", "--public"},
        {"create", "Music", "--for", "anna"},
    };
    for (const Strings& call : calls) {
        expectEnd(vokctl(shares(call)), 3, "", kAway);
    }
}

} // namespace
