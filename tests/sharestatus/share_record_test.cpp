// SPDX-License-Identifier: MIT
//
// GetUserCapUsage and GetUserBkStatus: the two halves of a share's record.
#include "sharestatus/share_record.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>

#include "sharestatus/sharestatus.h"
#include "sharestatus/status_format.h"
#include "tests/support/root.h"

namespace {

using Lines = std::vector<std::string>;
using root::le16;
using root::trace;

/// A record that shows every byte that is written.
class ShareRecord : public root::Test {
  protected:
    sharestatus::WorkRecord record{};

    ShareRecord() { record.fill('#'); }

    [[nodiscard]] std::string bytes() const { return {record.begin(), record.end()}; }

    [[nodiscard]] static std::string untouched(std::size_t from)
    {
        return std::string(sharestatus::kWorkRecordSize - from, '#');
    }
};

// ---- Units ------------------------------------------------------------------------------------

TEST(ScaledUsage, unitsChangeAtTheirThresholds)
{
    const auto expectScaled = [](std::int64_t kibibytes, int value, char unit) {
        const sharestatus::ScaledUsage usage = sharestatus::scaleUsage(kibibytes);
        EXPECT_EQ(usage.value, value) << kibibytes;
        EXPECT_EQ(usage.unit, unit) << kibibytes;
    };
    expectScaled(0, 0, 'K');
    expectScaled(1, 1, 'K');
    expectScaled(1023, 1023, 'K');
    expectScaled(1024, 1024, 'K');
    expectScaled(1025, 1, 'M');
    expectScaled(1999, 1, 'M');
    expectScaled(2000, 2, 'M');
    expectScaled(999999, 999, 'M');
    expectScaled(1000000, 1000, 'M');
    expectScaled(1000001, 1, 'G');
    expectScaled(1999999, 1, 'G');
    expectScaled(2000000, 2, 'G');
    expectScaled(65536000000, 65536, 'G');
    expectScaled(2147483647, 2147, 'G');
    expectScaled(2147483648, 2147, 'G');
    expectScaled(4294967296, 4294, 'G');
    expectScaled(99999999999, 99999, 'G');
    expectScaled(4294967296000000, 0, 'G');
    expectScaled(4294967297000000, 1, 'G');
    expectScaled(-1, -1, 'K');
    expectScaled(-4294967297, -1, 'K');
    expectScaled(-2000000, -2000000, 'K');
}

// ---- Space used -------------------------------------------------------------------------------

class CapUsage : public ShareRecord {
  protected:
    const std::string command = "du -sk \"/share/Music\" > /tmp/pelsts1.tmp";
    const Lines callsOfSuccess = {trace("GetUserCapUsage system: " + command), command};
    const Lines callsOfFailure = {trace("GetUserCapUsage system: " + command), command,
                                  trace("GetUserCapUsage() return error 0xFFFFFFFF")};

    void expectUsage(const std::string& kibibytes, unsigned value, char unit,
                     const std::string& traced = "")
    {
        watch::restart();
        record.fill('#');
        root::stubUsage("Music", kibibytes);
        EXPECT_EQ(GetUserCapUsage(record.data(), "Music"), 0) << kibibytes;
        EXPECT_EQ(bytes(), le16(value) + unit + untouched(3)) << kibibytes;
        Lines calls = callsOfSuccess;
        if (unit == 'G') {
            const std::string shown = traced.empty() ? std::to_string(value) : traced;
            calls.push_back(trace("GetUserCapUsage system: " + shown + "G"));
        }
        EXPECT_EQ(watch::calls(), calls) << kibibytes;
        EXPECT_EQ(root::list("/tmp"), Lines{"dbg_vokcontrol.txt"});
    }
};

TEST_F(CapUsage, unitsChangeAtTheirThresholds)
{
    expectUsage("0", 0, 'K');
    expectUsage("4", 4, 'K');
    expectUsage("1024", 1024, 'K');
    expectUsage("1025", 1, 'M');
    expectUsage("1999", 1, 'M');
    expectUsage("2000", 2, 'M');
    expectUsage("1000000", 1000, 'M');
    expectUsage("1000001", 1, 'G');
    expectUsage("1999999", 1, 'G');
    expectUsage("2000000", 2, 'G');
    expectUsage("65535000000", 65535, 'G');
}

TEST_F(CapUsage, valueIsSixteenBitsWide)
{
    expectUsage("65536000000", 0, 'G', "65536");
    expectUsage("-5", 65531, 'K');
}

TEST_F(CapUsage, numberBeyondThirtyTwoBitsIsMeasured)
{
    expectUsage("2147483647", 2147, 'G');
    expectUsage("2147483648", 2147, 'G');
    expectUsage("4294967296", 4294, 'G');
    expectUsage("99999999999", 99999 - 65536, 'G', "99999");
    expectUsage("9223372036854775808", 23286, 'G', "2077252342");
}

TEST_F(CapUsage, leadingNumberCounts)
{
    expectUsage("  12x34", 12, 'K');
    expectUsage("010", 10, 'K');
    expectUsage("0x10", 0, 'K');
    expectUsage("none", 0, 'K');
}

TEST_F(CapUsage, onlyTheFirstLineCounts)
{
    expectUsage("7\t/share/other\n9", 7, 'K');
}

TEST_F(CapUsage, realShareIsMeasured)
{
    std::filesystem::create_directories("/share/Music");
    root::writeFile("/share/Music/song", std::string(40000, 's'));
    EXPECT_EQ(GetUserCapUsage(record.data(), "Music"), 0);
    EXPECT_EQ(record[2], 'K');
    const std::string usage = bytes().substr(0, 2);
    EXPECT_TRUE(usage == le16(40) || usage == le16(44)) << "with or without the folder's own block";
}

TEST_F(CapUsage, blankInTheNameReachesDuAndIsLostInTheTrace)
{
    const std::string line = "du -sk \"/share/My Music\" > /tmp/pelsts1.tmp";
    root::stubUsage("My Music", "16");
    EXPECT_EQ(GetUserCapUsage(record.data(), "My Music"), 0);
    EXPECT_EQ(bytes(), le16(16) + "K" + untouched(3));
    EXPECT_EQ(watch::calls(), (Lines{trace("GetUserCapUsage system: " + line), line}));
    EXPECT_EQ(root::readFile(root::kTraceFile),
              "GetUserCapUsage system: du -sk /share/My Music > /tmp/pelsts1.tmp\n");
}

TEST_F(CapUsage, missingShareIsAFailure)
{
    EXPECT_EQ(GetUserCapUsage(record.data(), "Music"), -1);
    EXPECT_EQ(bytes(), untouched(0));
    EXPECT_EQ(watch::calls(), callsOfFailure);
    EXPECT_EQ(root::list("/tmp"), Lines{"dbg_vokcontrol.txt"});
}

TEST_F(CapUsage, missingDuIsAFailure)
{
    root::stub("du", "exit 127");
    EXPECT_EQ(GetUserCapUsage(record.data(), "Music"), -1);
    EXPECT_EQ(watch::calls(), callsOfFailure);
}

TEST_F(CapUsage, failingDuThatPrintsANumberCounts)
{
    root::stub("du", "echo 33; exit 1");
    EXPECT_EQ(GetUserCapUsage(record.data(), "Music"), 0);
    EXPECT_EQ(bytes(), le16(33) + "K" + untouched(3));
}

TEST_F(CapUsage, shellThatCannotStartIsAFailureAndTheFileStays)
{
    root::writeFile(root::kCollectorFile, "55");
    watch::answer("du", -1, EAGAIN);
    EXPECT_EQ(GetUserCapUsage(record.data(), "Music"), -1);
    EXPECT_EQ(bytes(), untouched(0));
    EXPECT_EQ(watch::calls(), callsOfFailure);
    EXPECT_EQ(root::readFile(root::kCollectorFile), "55");
}

TEST_F(CapUsage, duReapedElsewhereCounts)
{
    root::stubUsage("Music", "21");
    std::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(GetUserCapUsage(record.data(), "Music"), 0);
    EXPECT_EQ(bytes(), le16(21) + "K" + untouched(3));
    EXPECT_EQ(watch::calls(), callsOfSuccess);
}

TEST_F(CapUsage, outputThatIsGoneIsAFailure)
{
    root::stubUsage("Music", "21");
    watch::after("du", [] { std::filesystem::remove(root::kCollectorFile); });
    EXPECT_EQ(GetUserCapUsage(record.data(), "Music"), -1);
    EXPECT_EQ(watch::calls(), callsOfFailure);
}

TEST_F(CapUsage, unreadableOutputIsAFailureAndStays)
{
    root::stubUsage("Music", "21");
    watch::after("du", [] {
        std::filesystem::permissions(root::kCollectorFile, std::filesystem::perms(0200));
    });
    EXPECT_EQ(GetUserCapUsage(record.data(), "Music"), -1);
    EXPECT_EQ(watch::calls(), callsOfFailure);
    EXPECT_TRUE(root::exists(root::kCollectorFile));
}

TEST_F(CapUsage, outputThatCannotBeRemovedIsTraced)
{
    root::stubUsage("Music", "21");
    root::writeFile(root::kTraceFile, "");
    root::writeFile(root::kCollectorFile, "");
    std::filesystem::permissions("/tmp", std::filesystem::perms(0555));
    bool isOpen = true;
    watch::after("echo \"cannot remove", [&] { isOpen = root::isOpen(root::kCollectorFile); });
    EXPECT_EQ(GetUserCapUsage(record.data(), "Music"), 0);
    EXPECT_FALSE(isOpen);
    EXPECT_EQ(bytes(), le16(21) + "K" + untouched(3));
    EXPECT_EQ(watch::calls(), (Lines{callsOfSuccess[0], callsOfSuccess[1],
                                     trace("cannot remove file /tmp/pelsts1.tmp: "
                                           "Permission denied")}));
}

TEST_F(CapUsage, sizeIsTracedBeforeTheOutputIsRemoved)
{
    root::stubUsage("Music", "2000000");
    std::string atTheTrace;
    watch::after("echo \"GetUserCapUsage system: 2G",
                 [&] { atTheTrace = root::readFile(root::kCollectorFile); });
    EXPECT_EQ(GetUserCapUsage(record.data(), "Music"), 0);
    EXPECT_EQ(atTheTrace, "2000000\t/share/Music\n");
    EXPECT_FALSE(root::exists(root::kCollectorFile));
}

TEST_F(CapUsage, emptyOutputIsRemovedBeforeTheFailureIsTraced)
{
    bool isLeft = true;
    watch::after("echo \"GetUserCapUsage() return", [&] {
        isLeft = root::exists(root::kCollectorFile) || root::isOpen(root::kCollectorFile);
    });
    EXPECT_EQ(GetUserCapUsage(record.data(), "Music"), -1);
    EXPECT_FALSE(isLeft);
}

TEST_F(CapUsage, fullDiskIsAFailure)
{
    root::stubUsage("Music", "21");
    root::writeFile(root::kTraceFile, "");
    root::fillDisk("/tmp");
    EXPECT_EQ(GetUserCapUsage(record.data(), "Music"), -1);
    EXPECT_EQ(bytes(), untouched(0));
}

TEST_F(CapUsage, onlyTwoHundredFiftyFiveCharactersOfTheLineCount)
{
    expectUsage(std::string(254, ' ') + "12", 1, 'K');
    expectUsage(std::string(255, ' ') + "12", 0, 'K');
}

TEST_F(CapUsage, olderOutputIsReadIfTheShellCannotParseTheName)
{
    watch::mayBeStrange("du");
    // The shell stops before it opens the file, so the old content is read as du's output.
    root::writeFile(root::kCollectorFile, "return [\"x\"];");
    EXPECT_EQ(GetUserCapUsage(record.data(), "x`y"), 0);
    EXPECT_EQ(bytes(), le16(0) + "K" + untouched(3));
}

TEST_F(CapUsage, longestNameOfAListIsPassedOnWhole)
{
    const std::string name(4095, 'n');
    EXPECT_EQ(GetUserCapUsage(record.data(), name.c_str()), -1);
    EXPECT_EQ(watch::calls().at(1), "du -sk \"/share/" + name + "\" > /tmp/pelsts1.tmp");
}

// ---- Last backup ------------------------------------------------------------------------------

class BackupStatus : public ShareRecord {
  protected:
    const std::string path = "/etc/pelconfig/vokcontrol/__bksts/__bkMusic";

    void expectRecord(const std::string& content, const std::string& dateAndState,
                      const std::string& tracedLine)
    {
        watch::restart();
        record.fill('#');
        root::writeFile(path, content);
        GetUserBkStatus(record.data(), "Music");
        EXPECT_EQ(bytes(), "###" + dateAndState + untouched(3 + dateAndState.size())) << content;
        EXPECT_EQ(watch::calls(), (Lines{trace("filename = " + path),
                                         trace("GetUserBkStatus " + tracedLine + " ")}))
            << content;
        EXPECT_EQ(root::readFile(path), content);
    }
};

TEST_F(BackupStatus, dateComesBeforeTheState)
{
    expectRecord("311212026", "112120263", "311212026");
    expectRecord("311212026\n", "112120263", "311212026\n");
}

TEST_F(BackupStatus, lineOfEightCharactersIsTooShort)
{
    expectRecord("31121202", "", "31121202");
    expectRecord("3112120\n", "", "3112120\n");
    expectRecord("\n", "", "\n");
    expectRecord("", "", "");
}

TEST_F(BackupStatus, newlineCountsAsTheNinthCharacter)
{
    expectRecord("31121202\n", "1121202\n3", "31121202\n");
}

TEST_F(BackupStatus, malformedLineIsTakenUnchanged)
{
    expectRecord("no backup yet\n", "o backupn", "no backup yet\n");
}

TEST_F(BackupStatus, onlyTheFirstLineCounts)
{
    expectRecord("1\n211212026\n", "", "1\n");
}

TEST_F(BackupStatus, zeroByteEndsTheLine)
{
    expectRecord(std::string("3112\0"
                             "12026",
                             10),
                 "", "3112");
}

TEST_F(BackupStatus, longLineIsReadUpToItsBuffer)
{
    expectRecord("4" + std::string(300, '7'), "777777774", "4" + std::string(254, '7'));
}

TEST_F(BackupStatus, fileIsOpenedAfterItsNameIsTracedAndClosedAtTheEnd)
{
    watch::after("echo \"filename", [this] { root::writeFile(path, "311212026"); });
    GetUserBkStatus(record.data(), "Music");
    EXPECT_EQ(bytes(), "###112120263" + untouched(12));
    EXPECT_FALSE(root::isOpen(path));
}

TEST_F(BackupStatus, missingFileDoesNotChangeTheRecord)
{
    GetUserBkStatus(record.data(), "Music");
    EXPECT_EQ(bytes(), untouched(0));
    EXPECT_EQ(watch::calls(), Lines{trace("filename = " + path)});
}

TEST_F(BackupStatus, unreadableFileDoesNotChangeTheRecord)
{
    root::writeFile(path, "311212026");
    std::filesystem::permissions(path, std::filesystem::perms(0));
    GetUserBkStatus(record.data(), "Music");
    EXPECT_EQ(bytes(), untouched(0));
    EXPECT_EQ(watch::calls(), Lines{trace("filename = " + path)});
}

TEST_F(BackupStatus, missingFolderDoesNotChangeTheRecord)
{
    std::filesystem::remove_all("/etc/pelconfig/vokcontrol");
    GetUserBkStatus(record.data(), "Music");
    EXPECT_EQ(bytes(), untouched(0));
}

TEST_F(BackupStatus, folderInTheFilesPlaceDoesNotChangeTheRecord)
{
    std::filesystem::create_directory(path);
    GetUserBkStatus(record.data(), "Music");
    EXPECT_EQ(bytes(), untouched(0));
    EXPECT_EQ(watch::calls(), (Lines{trace("filename = " + path), trace("GetUserBkStatus  ")}));
}

TEST_F(BackupStatus, nameOfAnyLengthReadsOnlyItsOwnFile)
{
    const std::string name(4000, 'n');
    GetUserBkStatus(record.data(), name.c_str());
    EXPECT_EQ(bytes(), untouched(0));
    const std::string message = "filename = /etc/pelconfig/vokcontrol/__bksts/__bk" + name;
    EXPECT_EQ(watch::calls(), Lines{trace(message.substr(0, 1999))});
}

} // namespace
