// SPDX-License-Identifier: MIT
//
// "vokctl backup" as people and scripts call it.
#include <filesystem>
#include <gtest/gtest.h>

#include "tests/support/scripted_service.h"
#include "tests/support/vokserve.h"

namespace {

using root::Ended;
using root::Exchange;
using root::le16;
using root::le32;

const std::string kReportFolder = "/etc/pelconfig/vokcontrol/__bksts/";
constexpr const char* kVariableFile = "/etc/pelconfig/system_var";

// Why a name is refused.
const std::string kRefusedName =
    "The user's name is longer than 60 bytes, or has a character that cannot be used. (0xFF000003)";
const std::string kRefusedVariable = "The user's name does not have 1 to 64 bytes, or has a "
                                     "character that cannot be used. (0xFF000003)";

// ---- What is sent and what is made of an answer -----------------------------------------------

/// Runs "vokctl backup" against a service that gives this answer, whatever it is asked.
Exchange exchangeBackup(std::vector<std::string> arguments, const std::string& answer)
{
    arguments.insert(arguments.begin(), "backup");
    return root::exchange(arguments, {answer});
}

std::string statusFrame(std::uint32_t code)
{
    return "subs " + le32(code) + std::string(1, '\0');
}

/// The folders of the shares that these tests report on.
void makeShares()
{
    for (const std::string& name :
         {std::string("anna"), std::string("Family Videos"), std::string("\xC3\x89lise"),
          std::string("ab"), std::string(60, 'n'), std::string(61, 'n')}) {
        std::filesystem::create_directory("/share/" + name);
    }
}

class BackupExchange : public root::UntracedTest {
  protected:
    void SetUp() override
    {
        root::UntracedTest::SetUp();
        makeShares();
    }

    static void expectKept(const std::vector<std::string>& arguments, const std::string& answer,
                           const std::string& frame)
    {
        const Exchange caught = exchangeBackup(arguments, answer);
        EXPECT_EQ(caught.frames.at(0), frame);
        EXPECT_EQ(caught.ended.exitCode, 0);
        EXPECT_EQ(caught.ended.output, "");
        EXPECT_EQ(caught.ended.errors, "vokctl: the report was stored\n");
    }

    static void expectEnd(const std::vector<std::string>& arguments, const std::string& answer,
                          int code, const std::string& sentence)
    {
        const Ended ended = exchangeBackup(arguments, answer).ended;
        EXPECT_EQ(ended.exitCode, code) << sentence;
        EXPECT_EQ(ended.output, "");
        EXPECT_EQ(ended.errors, "vokctl: " + sentence + "\n");
    }
};

TEST_F(BackupExchange, reportIsAStateAndANameBehindTheLine)
{
    const std::string line = "sub1 " + le32(2) + "\n";
    expectKept({"report", "anna", "--state", "1"}, le32(0), line + "\x01 anna\n");
    expectKept({"report", "--state", "0", "Family Videos"}, le32(0),
               line + std::string(1, '\0') + " Family Videos\n");
    expectKept({"report", "\xC3\x89lise", "--state", "10"}, le32(0), line + "\n \xC3\x89lise\n");
    expectKept({"report", "a\\b", "--state", "255"}, le32(0), line + "\xFF a\\b\n");
    const std::string name(61, 'n');
    expectKept({"report", name, "--state", "7"}, le32(0), line + "\x07 " + name + "\n");
}

TEST_F(BackupExchange, reportAsAVariableStandsInTheLine)
{
    const auto expectFrame = [](const std::string& name, const std::string& state,
                                const std::string& frame) {
        expectKept({"report", name, "--state", state, "--as-variable"}, statusFrame(0), frame);
    };
    expectFrame("a", "3",
                "subs \x03 \x03"
                "a\n");
    expectFrame("anna", "0", std::string("subs \x06 \0anna\n", 13));
    expectFrame("anna", "255",
                "subs \x06 \xFF"
                "anna\n");
    expectFrame(std::string(64, 'n'), "9", "subs B \t" + std::string(64, 'n') + "\n");
    // The length is a newline; the appliance knows.
    expectFrame("johannes", "3", "subs \n \x03johannes\n");
}

TEST_F(BackupExchange, listAsksForTheTable)
{
    const Exchange caught = exchangeBackup({"list"}, "gubr " + le16(0) + le16(500) + "\n");
    EXPECT_EQ(caught.frames.at(0), "gub1 " + le32(0) + "\n");
}

TEST_F(BackupExchange, refusedReportIsSaidInWords)
{
    const std::vector<std::string> report = {"report", "anna", "--state", "1"};
    expectEnd(report, le32(0xFF000003), 1, kRefusedName);
    expectEnd(
        report, le32(0xC2000002), 1,
        "The report could not be stored; see whether the appliance's disk is full. (0xC2000002)");
    expectEnd(report, le32(0xC2000003), 1,
              "The report could not be stored, because the appliance's date cannot be read. "
              "(0xC2000003)");
}

TEST_F(BackupExchange, refusedVariableIsSaidInWords)
{
    const std::vector<std::string> report = {"report", "anna", "--state", "1", "--as-variable"};
    expectEnd(report, statusFrame(0xFF000003), 1, kRefusedVariable);
    expectEnd(report, statusFrame(0xC2000003), 1,
              "The report could not be stored, because the appliance's date cannot be read. "
              "(0xC2000003)");
    expectEnd(
        report, statusFrame(0xC2000002) + statusFrame(0), 1,
        "The report could not be stored; see whether the appliance's disk is full. (0xC2000002)");
}

TEST_F(BackupExchange, refusedListIsSaidInWords)
{
    expectEnd({"list"}, le32(0xFF000003), 1,
              "The command takes another number of parameters. (0xFF000003)");
}

TEST_F(BackupExchange, answerThatMakesNoSenseIsSaid)
{
    const std::string start = "the answer cannot be read: ";
    const std::string empty =
        "empty: the command was ignored, is not known, or failed before it answered";
    const std::string shapeless = "of a shape that this client does not know";
    expectEnd({"report", "anna", "--state", "1"}, "", 7, start + empty);
    expectEnd({"report", "anna", "--state", "1"}, "abc", 7, start + shapeless);
    expectEnd({"list"}, "", 7, start + empty);
    expectEnd({"list"}, "gubr ", 7, start + shapeless);
    expectEnd({"list"}, "gubr " + le32(0), 7, start + shapeless);
    const std::string header = "gubr " + le16(1) + le16(500) + "\n";
    expectEnd({"list"}, header + "x", 7, start + shapeless);
    expectEnd({"list"}, header + le16(4) + "K030720253anna", 7, start + shapeless);
}

TEST_F(BackupExchange, recordsAreShownWhateverTheHeaderCounts)
{
    // A table that the appliance has counted by its newlines may count too many.
    const std::string records =
        le16(10) + "M030720253anna\n" + le16(4) + "K" + std::string(9, '\0') + "Empty\n";
    for (const unsigned count : {1U, 2U, 3U, 65535U}) {
        const Ended ended =
            exchangeBackup({"list"}, "gubr " + le16(count) + le16(65535) + "\n" + records).ended;
        EXPECT_EQ(ended.exitCode, 0) << count;
        EXPECT_EQ(ended.output, "SHARE  USED  STATE  LAST BACKUP\n"
                                "anna   10 M  3      2025-03-07\n"
                                "Empty   4 K  -      -\n"
                                "\n"
                                "The internal disk has 65535 GB.\n")
            << count;
        EXPECT_EQ(ended.errors, "");
    }
}

// ---- Through the service ----------------------------------------------------------------------

class BackupCommand : public root::ServedTest {
  protected:
    void SetUp() override
    {
        root::ServedTest::SetUp();
        makeShares();
        root::stub("date", "echo 03072025");
        root::stub("fdisk", "echo 'Disk /dev/sda: 320.1 GB'");
        root::stub("pelparam", "echo 1");
        root::stub("pelstatus", "exit 0");
        root::stub("ps", "echo pelstatus");
        root::writeFile(kVariableFile, "a=b\n");
    }

    static void expectKept(const Ended& ended)
    {
        expectEnd(ended, 0, "", "vokctl: the report was stored\n");
    }

    static void publish(const std::string& payload)
    {
        unsigned sum = 0;
        for (const char c : payload) {
            sum += static_cast<unsigned char>(c);
        }
        root::writeFile(root::kStatusFile, le32(static_cast<std::uint32_t>(payload.size()) + 1) +
                                               payload + static_cast<char>(sum % 16));
    }

    static std::string table(unsigned count, const std::string& records)
    {
        return std::string(5, '\0') + le16(count) + std::string(3, '\0') + records;
    }
};

TEST_F(BackupCommand, reportIsKeptForTheCollection)
{
    expectKept(vokctl({"backup", "report", "Family Videos", "--state", "3"}));
    EXPECT_EQ(root::list(kReportFolder), std::vector<std::string>{"__bkFamily Videos"});
    EXPECT_EQ(root::readFile(kReportFolder + "__bkFamily Videos"), "303072025");
    expectKept(vokctl({"backup", "report", "Family Videos", "--state", "10"}));
    EXPECT_EQ(root::readFile(kReportFolder + "__bkFamily Videos"), "103072025");
    EXPECT_EQ(root::readFile(kVariableFile), "a=b\n");
}

TEST_F(BackupCommand, reportOnWhatIsNoShareIsKeptWithAWarning)
{
    expectEnd(vokctl({"backup", "report", "Fam\xFFVideos", "--state", "3"}), 0, "",
              "vokctl: the report was stored\n"
              "vokctl: warning: there is no share Fam\\xffVideos, so no collection reads this "
              "report\n");
    std::filesystem::permissions("/share", std::filesystem::perms(0));
    expectKept(vokctl({"backup", "report", "nobody", "--state", "3"}));
    std::filesystem::permissions("/share", std::filesystem::perms(0755));
}

TEST_F(BackupCommand, reportIsKeptAsAVariable)
{
    // The length of "johannes" counts as a newline.
    for (const char* user : {"a", "anna", "johannes"}) {
        expectKept(vokctl({"backup", "report", user, "--state", "12", "--as-variable"}));
    }
    const std::string longest(64, 'n');
    expectKept(vokctl({"backup", "report", longest, "--state", "0", "--as-variable"}));
    EXPECT_EQ(root::readFile(kVariableFile),
              "a=b\n__bka=103072025\n__bkanna=103072025\n__bkjohannes=103072025\n__bk" + longest +
                  "=003072025\n");
    EXPECT_EQ(root::list(kReportFolder), std::vector<std::string>{});
}

TEST_F(BackupCommand, reportThatCannotBeKeptIsRefused)
{
    const std::string sentence = "vokctl: The report could not be stored; see whether the "
                                 "appliance's disk is full. (0xC2000002)\n";
    std::filesystem::remove(kReportFolder.substr(0, kReportFolder.size() - 1));
    expectEnd(vokctl({"backup", "report", "anna", "--state", "1"}), 1, "", sentence);
    std::filesystem::remove(kVariableFile);
    expectEnd(vokctl({"backup", "report", "anna", "--state", "1", "--as-variable"}), 1, "",
              sentence);
}

TEST_F(BackupCommand, namesOfMoreThanSixtyBytesAreRefused)
{
    expectKept(vokctl({"backup", "report", std::string(60, 'n'), "--state", "1"}));
    for (const std::size_t size : {61U, 67U, 68U}) {
        expectEnd(vokctl({"backup", "report", std::string(size, 'n'), "--state", "1"}), 1, "",
                  "vokctl: " + kRefusedName + "\n");
    }
    EXPECT_EQ(root::list(kReportFolder).size(), 1U);
}

TEST_F(BackupCommand, namesThatCouldTalkToTheShellAreRefused)
{
    for (const char* name : {"a$(touch /stubs/ran)", "a`touch /stubs/ran`", "a\"b", "a/b", "a;b"}) {
        expectEnd(vokctl({"backup", "report", name, "--state", "1"}), 1, "",
                  "vokctl: " + kRefusedName + "\n");
        expectEnd(vokctl({"backup", "report", name, "--state", "1", "--as-variable"}), 1, "",
                  "vokctl: " + kRefusedVariable + "\n");
    }
    EXPECT_FALSE(root::exists("/stubs/ran"));
    EXPECT_EQ(root::list(kReportFolder), std::vector<std::string>{});
    EXPECT_EQ(root::readFile(kVariableFile), "a=b\n");
}

TEST_F(BackupCommand, whatCannotBeSentAsAVariableIsWrongUsage)
{
    const auto report = [](const std::string& user, const std::string& state) {
        return vokctl({"backup", "report", user, "--state", state, "--as-variable"});
    };
    for (const std::size_t size : {0U, 65U}) {
        expectEnd(report(std::string(size, 'n'), "1"), 2, "",
                  "vokctl: with --as-variable a user's name has 1 to 64 bytes\n");
    }
    expectEnd(
        report("anna", "10"), 2, "",
        "vokctl: with --as-variable the state cannot be 10, because that byte ends the line\n");
    expectEnd(report("an\nna", "1"), 2, "",
              "vokctl: a name or a value cannot contain a newline or a zero byte\n");
    EXPECT_EQ(root::readFile(kVariableFile), "a=b\n");
}

TEST_F(BackupCommand, wrongUsageEndsWithTwo)
{
    expectEnd(vokctl({"backup", "report", "an\nna", "--state", "1"}), 2, "",
              "vokctl: a name or a value cannot contain a newline or a zero byte\n");
    const std::vector<std::vector<std::string>> wrong = {
        {"backup"},
        {"backup", "report"},
        {"backup", "report", "anna"},
        {"backup", "report", "--state", "1"},
        {"backup", "report", "anna", "--state", "256"},
        {"backup", "report", "anna", "--state", "-1"},
        {"backup", "report", "anna", "--state", "good"},
        {"backup", "report", "anna", "bob", "--state", "1"},
        {"backup", "list", "anna"},
    };
    for (const std::vector<std::string>& arguments : wrong) {
        const Ended ended = vokctl(arguments);
        EXPECT_EQ(ended.exitCode, 2) << arguments.back();
        EXPECT_EQ(ended.output, "");
        EXPECT_NE(ended.errors, "");
    }
    EXPECT_EQ(root::list(kReportFolder), std::vector<std::string>{});
}

TEST_F(BackupCommand, listShowsEveryShareAndTheDisk)
{
    publish(table(2, le16(604) + "K031120263Documents\n" + le16(9) + "G" + std::string(9, '\0') +
                         "\xC3\x89t\xC3\xA9\n"));
    expectEnd(vokctl({"backup", "list"}), 0,
              "SHARE       USED  STATE  LAST BACKUP\n"
              "Documents  604 K  3      2026-03-11\n"
              "\xC3\x89t\xC3\xA9          9 G  -      -\n"
              "\n"
              "The internal disk has 320 GB.\n",
              "");
}

TEST_F(BackupCommand, jsonIsForPrograms)
{
    publish(table(1, le16(604) + "K031120263a\xC3\n"));
    expectEnd(vokctl({"backup", "list", "--json"}), 0, R"({
  "capacity_gb": 320,
  "shares": [
    {
      "name": "a\ufffd",
      "name_hex": "61c3",
      "used": 604,
      "unit": "K",
      "used_kib": 604,
      "unit_kib": 1,
      "backup_state": 3,
      "backup_date": "2026-03-11"
    }
  ]
}
)",
              "");
}

TEST_F(BackupCommand, hostileNamesNeverReachTheTerminalRaw)
{
    publish(table(1, le16(1) + "K031120263a\x1B[2Jz\n"));
    expectEnd(vokctl({"backup", "list"}), 0,
              "SHARE        USED  STATE  LAST BACKUP\n"
              "a\\u{1b}[2Jz   1 K  3      2026-03-11\n"
              "\n"
              "The internal disk has 320 GB.\n",
              "");
}

TEST_F(BackupCommand, withoutSharesThereIsNoData)
{
    const std::string sentence = "vokctl: no share status has been published yet; start a "
                                 "collection with \"vokctl collect\", then try again\n";
    expectEnd(vokctl({"backup", "list"}), 6, "", sentence);
    expectEnd(vokctl({"backup", "list", "--json"}), 6,
              "{\n  \"capacity_gb\": 320,\n  \"shares\": []\n}\n", sentence);
}

TEST_F(BackupCommand, unreachableServiceIsSaid)
{
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"report", "anna", "--state", "1"}, {"list"}}) {
        std::vector<std::string> command = {root::built("vokctl"), "backup"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        command.insert(command.end(), {"--socket", "/tmp/none"});
        expectEnd(root::run(command), 3, "",
                  "vokctl: cannot reach the service at /tmp/none: No such file or directory. Is "
                  "vokserve running?\n");
    }
}

} // namespace
