// SPDX-License-Identifier: MIT
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/file_events.h"
#include "tests/support/root.h"
#include "vokcontrol.h"

namespace {

using Lines = std::vector<std::string>;

constexpr const char* kFile = "/etc/pelconfig/system_var";
constexpr const char* kNew = "/etc/pelconfig/system_var_tmp";
constexpr const char* kBackup = "/etc/pelconfig/system_var_bak";

/// The comment if the file cannot be opened.
const std::string kNoFile = "//<!-- getvar() - getsetvar failed open file: "
                            "/etc/pelconfig/system_var, syserr: No such file or directory-->\n";

ino_t inodeOf(const char* path)
{
    struct stat status = {};
    EXPECT_EQ(::stat(path, &status), 0) << path;
    return status.st_ino;
}

class Variables : public root::Test {
  protected:
    void SetUp() override
    {
        root::Test::SetUp();
        std::filesystem::remove_all("/etc/pelconfig/vokcontrol");
    }

    /// Sets a variable in a file and compares the files that this leaves.
    static void expectSet(const std::string& before, const char* name, const char* value,
                          const std::string& after)
    {
        root::writeFile(kFile, before);
        EXPECT_EQ(setvar(name, value), 0);
        EXPECT_EQ(root::readFile(kFile), after);
        EXPECT_EQ(root::readFile(kBackup), before);
        EXPECT_EQ(inodeOf(kNew), inodeOf(kFile));
        EXPECT_EQ(root::list("/etc/pelconfig"),
                  (Lines{"system_var", "system_var_bak", "system_var_lck", "system_var_tmp"}));
        EXPECT_EQ(watch::calls(), Lines{});
    }
};

// ---- setvar -----------------------------------------------------------------------------------

TEST_F(Variables, newNameIsAppended)
{
    expectSet("a=1\nb=2\n", "c", "3", "a=1\nb=2\nc=3\n");
    expectSet("", "c", "3", "c=3\n");
}

TEST_F(Variables, existingNameIsRewrittenInPlace)
{
    expectSet("a=1\nb=2\nc=3\n", "b", "x y", "a=1\nb=x y\nc=3\n");
    expectSet("b \t= 2\r\n", "b", "", "b=\n");
}

TEST_F(Variables, everyLineOfANameIsRewritten)
{
    expectSet("a=1\nb=2\na = 3\n", "a", "9", "a=9\nb=2\na=9\n");
}

TEST_F(Variables, similarNamesAreNotChanged)
{
    const std::string others = "ab=1\n a=1\na b=1\nA=1\na\n=1\n";
    expectSet(others, "a", "2", others + "a=2\n");
}

TEST_F(Variables, lastLineWithoutANewlineGetsOneBeforeAnAddedLine)
{
    expectSet("a=1\nb=2", "c", "3", "a=1\nb=2\nc=3\n");
    expectSet("a=1\nb=2", "b", "3", "a=1\nb=3\n");
    expectSet("a=1\nb=2", "a", "3", "a=3\nb=2");
}

TEST_F(Variables, longLinesSurviveWholeAndNeverMatch)
{
    const std::string line = "a=" + std::string(1500, 'x') + "\n";
    expectSet(line, "a", "1", line + "a=1\n");
    const std::string inner = std::string(511, 'x') + "a=1\n";
    expectSet(inner, "a", "2", inner + "a=2\n");
    const std::string open = std::string(2000, 'x');
    expectSet(open, "a", "1", open + "\na=1\n");
}

TEST_F(Variables, zeroBytesSurvive)
{
    const std::string line("x=\0y\n\0\n", 7);
    expectSet(line, "a", "1", line + "a=1\n");
}

TEST_F(Variables, valueOfAnyLengthIsWrittenWhole)
{
    const std::string value(100000, 'v');
    expectSet("a=1\n", "a", value.c_str(), "a=" + value + "\n");
}

TEST_F(Variables, backupHoldsTheVersionBefore)
{
    root::writeFile(kFile, "a=1\n");
    EXPECT_EQ(setvar("a", "2"), 0);
    EXPECT_EQ(setvar("a", "3"), 0);
    EXPECT_EQ(root::readFile(kBackup), "a=2\n");
    EXPECT_EQ(root::readFile(kFile), "a=3\n");
}

TEST_F(Variables, oldFileIsClosedBeforeAnythingIsReplaced)
{
    root::writeFile(kFile, "a=1\n");
    root::writeFile(kBackup, "a=0\n");
    root::writeFile(kNew, "a=1\n");
    const root::FileEvents events("/etc/pelconfig");
    EXPECT_EQ(setvar("a", "2"), 0);
    EXPECT_EQ(events.happened(),
              (Lines{"remove system_var_tmp", "close system_var", "remove system_var_bak",
                     "write system_var_tmp", "close system_var_tmp", "remove system_var",
                     "close system_var_lck"}));
}

TEST_F(Variables, newVersionHasTheOldOnesMode)
{
    for (const mode_t mask : {022U, 077U, 0U}) {
        ::umask(mask);
        for (const unsigned mode : {0600U, 0640U, 0644U, 0666U, 0400U, 02660U}) {
            root::writeFile(kFile, "a=1\n");
            std::filesystem::permissions(kFile, std::filesystem::perms(mode));
            EXPECT_EQ(setvar("a", "2"), 0);
            for (const char* path : {kFile, kBackup}) {
                struct stat status = {};
                EXPECT_EQ(::stat(path, &status), 0);
                EXPECT_EQ(status.st_mode & 07777U, mode) << path;
            }
            std::filesystem::remove(kFile);
        }
    }
    ::umask(022);
}

TEST_F(Variables, missingFileIsNotCreated)
{
    EXPECT_EQ(setvar("a", "1"), -1);
    EXPECT_EQ(root::list("/etc/pelconfig"), Lines{"system_var_lck"});
}

TEST_F(Variables, copyThatCannotBeOpenedIsAFailure)
{
    root::writeFile(kFile, "a=1\n");
    std::filesystem::create_directory(kNew);
    EXPECT_EQ(setvar("a", "2"), -1);
    EXPECT_EQ(root::readFile(kFile), "a=1\n");
}

TEST_F(Variables, oldCopyIsRemovedEvenIfTheFileIsMissing)
{
    root::writeFile(kNew, "stale=1\n");
    EXPECT_EQ(setvar("a", "1"), -1);
    EXPECT_EQ(root::list("/etc/pelconfig"), Lines{"system_var_lck"});
}

TEST_F(Variables, copyThatCannotBeUnlinkedIsNeverTruncated)
{
    // After a good write the copy is a link to the file itself.
    root::writeFile(kFile, "a=1\n");
    std::filesystem::create_hard_link(kFile, kNew);
    std::filesystem::permissions("/etc/pelconfig", std::filesystem::perms(0555));
    EXPECT_EQ(setvar("a", "2"), -1);
    EXPECT_EQ(root::readFile(kFile), "a=1\n");
    EXPECT_EQ(inodeOf(kNew), inodeOf(kFile));
    EXPECT_EQ(root::list("/etc/pelconfig"), (Lines{"system_var", "system_var_tmp"}));
}

TEST_F(Variables, fileThatCannotBeReadIsNeverReplaced)
{
    std::filesystem::create_directory(kFile);
    EXPECT_EQ(setvar("a", "2"), -1);
    EXPECT_TRUE(std::filesystem::is_directory(kFile));
}

TEST_F(Variables, readOnlyFolderIsAFailure)
{
    root::writeFile(kFile, "a=1\n");
    std::filesystem::permissions("/etc/pelconfig", std::filesystem::perms(0555));
    EXPECT_EQ(setvar("a", "2"), -1);
    EXPECT_EQ(root::list("/etc/pelconfig"), Lines{"system_var"});
}

TEST_F(Variables, missingLockDoesNotStopAWrite)
{
    root::writeFile(kFile, "a=1\n");
    std::filesystem::create_directory("/etc/pelconfig/system_var_lck");
    EXPECT_EQ(setvar("a", "2"), 0);
    EXPECT_EQ(root::readFile(kFile), "a=2\n");
}

TEST_F(Variables, fullDiskLosesNothing)
{
    root::writeFile(kFile, "a=1\nb=2\n");
    ASSERT_EQ(setvar("b", "3"), 0);
    root::fillDisk("/etc/pelconfig");
    const std::string value(9000, 'v');
    EXPECT_EQ(setvar("a", value.c_str()), -1);
    EXPECT_EQ(root::readFile(kFile), "a=1\nb=3\n");
    EXPECT_STREQ(getvar("a"), "1");
}

TEST_F(Variables, writersAndReadersAtOnceLoseNothing)
{
    constexpr int kWriters = 4;
    constexpr int kRounds = 100;
    std::string content;
    for (int i = 0; i < 50; ++i) {
        content += "kept" + std::to_string(i) + "=" + std::to_string(i) + "\n";
    }
    root::writeFile(kFile, content);
    root::writeFile("/etc/pelconfig/system_var_lck", "");
    std::vector<pid_t> children;
    for (int writer = 0; writer < kWriters; ++writer) {
        children.push_back(::fork());
        if (children.back() == 0) {
            int failures = 0;
            for (int round = 0; round < kRounds; ++round) {
                const std::string name =
                    "w" + std::to_string(writer) + "_" + std::to_string(round % 10);
                failures += (setvar(name.c_str(), std::to_string(round).c_str()) == 0) ? 0 : 1;
                failures += (std::string(getvar("kept49")) == "49") ? 0 : 1;
                failures += (getvar(name.c_str()) == std::to_string(round)) ? 0 : 1;
            }
            ::_exit(failures);
        }
    }
    for (const pid_t child : children) {
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    for (int writer = 0; writer < kWriters; ++writer) {
        for (int i = 0; i < 10; ++i) {
            const std::string name = "w" + std::to_string(writer) + "_" + std::to_string(i);
            EXPECT_EQ(getvar(name.c_str()), std::to_string(kRounds - 10 + i));
        }
    }
    EXPECT_EQ(root::readFile(kFile).substr(0, content.size()), content);
}

// ---- getvar -----------------------------------------------------------------------------------

TEST_F(Variables, valueIsRead)
{
    root::writeFile(kFile, "a=1\nb \t= \tx y \r\nempty=\nlast=9");
    EXPECT_STREQ(getvar("a"), "1");
    EXPECT_STREQ(getvar("b"), "x y ");
    EXPECT_STREQ(getvar("empty"), "");
    EXPECT_STREQ(getvar("last"), "9");
    EXPECT_STREQ(getvar("missing"), "");
    EXPECT_EQ(watch::calls(), Lines{});
    EXPECT_EQ(root::list("/etc/pelconfig"), Lines{"system_var"}) << "readers create no lock";
}

TEST_F(Variables, firstLineOfANameCounts)
{
    root::writeFile(kFile, "ab=0\na=1\na=2\n");
    EXPECT_STREQ(getvar("a"), "1");
}

TEST_F(Variables, longLineHoldsNoValue)
{
    root::writeFile(kFile, "a=" + std::string(600, 'x') + "\na=short\n");
    EXPECT_STREQ(getvar("a"), "short");
    const std::string value(508, 'v');
    root::writeFile(kFile, "a=" + value + "\n");
    EXPECT_EQ(getvar("a"), value);
}

TEST_F(Variables, resultsShareABuffer)
{
    root::writeFile(kFile, "a=1\nb=22\n");
    const char* first = getvar("a");
    EXPECT_STREQ(first, "1");
    EXPECT_EQ(getvar("b"), first);
    EXPECT_STREQ(first, "22");
}

TEST_F(Variables, resultCanBeTheNextName)
{
    root::writeFile(kFile, "pointer=target\ntarget=5\n");
    EXPECT_STREQ(getvar(getvar("pointer")), "5");
    EXPECT_STREQ(getvar(getvar("pointer")), "5");
}

TEST_F(Variables, unreadableFileIsReportedInAComment)
{
    testing::internal::CaptureStdout();
    EXPECT_STREQ(getvar("a"), "");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), kNoFile);
}

TEST_F(Variables, unreadableFileIsReportedAtOnce)
{
    EXPECT_EQ(root::printedPieces([] {
                  getvar("a");
                  getvar("b");
              }),
              (Lines{kNoFile, kNoFile}));
}

TEST_F(Variables, readerWaitsForAWriter)
{
    root::writeFile(kFile, "a=old\n");
    root::writeFile("/etc/pelconfig/system_var_lck", "");
    const int lock = ::open("/etc/pelconfig/system_var_lck", O_WRONLY);
    ASSERT_EQ(::flock(lock, LOCK_EX), 0);
    const pid_t reader = ::fork();
    if (reader == 0) {
        ::close(lock);
        ::_exit(std::string(getvar("a")) == "new" ? 0 : 1);
    }
    ::usleep(200000);
    EXPECT_EQ(::waitpid(reader, nullptr, WNOHANG), 0);
    root::writeFile(kFile, "a=new\n");
    ::close(lock);
    int status = 0;
    ::waitpid(reader, &status, 0);
    EXPECT_EQ(status, 0);
}

// ---- Live values ------------------------------------------------------------------------------

class LiveVariables : public Variables {
  protected:
    static void answer(const std::string& text)
    {
        root::writeFile("/stubs/answer", text);
        root::stub("php", "cat /stubs/answer >\"$3\"");
    }

    static void expectLanguage(const std::string& language, const std::string& digit)
    {
        answer("<language>" + language + "</language>\n");
        EXPECT_EQ(getvar("pel_language"), digit) << language;
    }

    static std::string scriptLine(const std::string& function)
    {
        return "sudo /usr/bin/php /etc/inc/api_system.php " + function + " " +
               root::workFile("getSysVar");
    }
};

TEST_F(LiveVariables, networkNamesAskTheTools)
{
    root::writeFile(kFile, "lan_ipaddr=stored\n");
    root::stub("ifconfig", "echo '  inet addr:10.0.0.7  Mask:255.0.0.0 HWaddr 0A:1B:2C:3D:4E:5F'");
    root::stub("route", "echo '0.0.0.0         10.0.0.1        0.0.0.0         UG    0 0 0 eth0'");
    EXPECT_STREQ(getvar("lan_ipaddr"), "10.0.0.7");
    EXPECT_STREQ(getvar("lan_hwaddr"), "0A:1B:2C:3D:4E:5F");
    EXPECT_STREQ(getvar("lan_proto"), "dhcp_client");
    EXPECT_STREQ(getvar("lan_gateway"), "10.0.0.1");
    EXPECT_STREQ(getvar("lan_netmask"), "255.0.0.0");
    const char* live = getvar("lan_proto");
    root::writeFile(kFile, "a=1\n");
    EXPECT_EQ(getvar("a"), live) << "live values share the buffer with stored ones";
}

TEST_F(LiveVariables, machineNameAsksTheSystemScript)
{
    answer("<nmbdSysname>tower</nmbdSysname>\n");
    EXPECT_STREQ(getvar("machine_name"), "tower");
    EXPECT_EQ(watch::calls(), Lines{scriptLine("tovGetNmbdSysname")});
}

TEST_F(LiveVariables, keysIncludeTheBracketsOfTheTag)
{
    answer("<nmbdSysname>tower</nmbdSysname>\n<old_nmbdSysname>attic</old_nmbdSysname>\n"
           "<nmbdSysnames>many</nmbdSysnames>\n");
    EXPECT_STREQ(getvar("machine_name"), "tower");
    answer("<language>french</language>\n<old_language>german</old_language>\n"
           "<languages>italian</languages>\n");
    EXPECT_STREQ(getvar("pel_language"), "2");
}

TEST_F(LiveVariables, languageIsADigit)
{
    const std::vector<std::pair<std::string, std::string>> digits = {
        {"english", "1"},
        {"french", "2"},
        {"german", "3"},
        {"spanish", "4"},
        {"italian", "5"},
        {"chinese", "6"},
        {"traditional_chinese", "6"},
        {"klingon", "1"},
        {"", "1"},
        {"old_french", "2"},
    };
    for (const auto& [language, digit] : digits) {
        expectLanguage(language, digit);
    }
    EXPECT_EQ(watch::calls().back(), scriptLine("tovGetLanguage"));
}

TEST_F(LiveVariables, languageIsItsWholeName)
{
    // Only "french" is found here.
    expectLanguage("englis french", "2");
    expectLanguage("nglish french", "2");
    for (const std::string name :
         {"french", "german", "spanish", "italian", "chinese", "traditional_chinese"}) {
        expectLanguage(name.substr(0, name.size() - 1), "1");
    }
    for (const char* name : {"rench", "erman", "panish", "talian", "hinese"}) {
        expectLanguage(name, "1");
    }
}

TEST_F(LiveVariables, failingLanguageIsEnglish)
{
    root::stub("php", "exit 1");
    EXPECT_STREQ(getvar("pel_language"), "1");
}

TEST_F(LiveVariables, buildVersionIsTheBuildLine)
{
    root::writeFile("/etc/buildinfo.txt", "1.2.3\n");
    EXPECT_STREQ(getvar("build_version"), "1.2.3");
    std::filesystem::remove("/etc/buildinfo.txt");
    EXPECT_STREQ(getvar("build_version"), "");
}

TEST_F(LiveVariables, longestBuildLineIsWhole)
{
    root::writeFile("/etc/buildinfo.txt", std::string(600, 'b') + "\n");
    EXPECT_EQ(getvar("build_version"), std::string(511, 'b'));
    std::filesystem::remove("/etc/buildinfo.txt");
}

} // namespace
