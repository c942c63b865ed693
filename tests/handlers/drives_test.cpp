// SPDX-License-Identifier: MIT
#include "handlers/drives.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

#include "tests/support/root.h"

namespace {

namespace fs = std::filesystem;

using Lines = std::vector<std::string>;
using root::join;
using root::replaceByFolder;
using root::trace;

const std::string kWorkFile = "/tmp/vokcontrol2.tmp";
const std::string kTraces = "dbg_vokcontrol.txt";

/// Makes a command print a file of the test.
void stubOutput(const std::string& command, const std::string& output)
{
    root::writeFile("/stubs/" + command + ".out", output);
    root::stub(command, "cat /stubs/" + command + ".out");
}

void close(const std::string& path)
{
    fs::permissions(path, fs::perms(0200));
}

class Drives : public root::Test {
  protected:
    const std::string countFile = root::workFile("GetTovHDDS");
    const std::string countLine = "sudo pelparam -d > " + countFile;
    const std::string removeLine = "sudo rm -f " + countFile;

    [[nodiscard]] std::string failedCount(const std::string& reason) const
    {
        return trace("GetTovHDDS failed system(" + countLine + "), iRet:-1, strerr: " + reason);
    }

    [[nodiscard]] std::string unopenedCount(const std::string& reason) const
    {
        return trace("GetTovHDDS failed open file " + countFile + ", strerr: " + reason);
    }
};

// ---- GetTovHDDS -------------------------------------------------------------------------------

class DriveCount : public Drives {
  protected:
    void expectCount(const std::string& printed, int count)
    {
        watch::restart();
        stubOutput("pelparam", printed);
        EXPECT_EQ(GetTovHDDS(), count) << printed;
        EXPECT_EQ(watch::calls(), (Lines{countLine, removeLine})) << printed;
        EXPECT_EQ(root::list("/tmp"), Lines{}) << printed;
    }
};

TEST_F(DriveCount, countIsTheNumberInTheFirstLine)
{
    expectCount("1\n", 1);
    expectCount("2\n", 2);
    expectCount("4", 4);
    expectCount("0\n", 0);
    expectCount("3\n1\n", 3);
}

TEST_F(DriveCount, numberIsReadAsDecimal)
{
    expectCount("12 drives\n", 12);
    expectCount("  \t5\n", 5);
    expectCount("+6\n", 6);
    expectCount("010\n", 10);
    expectCount("0x10\n", 0);
    expectCount("none\n", 0);
    expectCount("\n2\n", 0);
    expectCount("-3\n", -3);
    expectCount(std::string("2\0004\n", 4), 2);
}

TEST_F(DriveCount, numberBeyondThirtyTwoBitsWrapsToTheLowBits)
{
    expectCount("4294967298\n", 2);
    expectCount("2147483648\n", std::numeric_limits<int>::min());
    expectCount("-4294967293\n", 3);
    expectCount("9223372036854775807\n", -1);
    expectCount("99999999999999999999\n", -1);
    expectCount("-99999999999999999999\n", 0);
}

TEST_F(DriveCount, withoutOutputThereIsOneDrive)
{
    expectCount("", 1);
}

TEST_F(DriveCount, onlyFiveHundredElevenCharactersOfTheLineCount)
{
    expectCount(std::string(510, ' ') + "12\n", 1);
    expectCount(std::string(511, ' ') + "12\n", 0);
}

TEST_F(DriveCount, pelparamGetsTheDriveOption)
{
    root::stub("pelparam", "test \"$*\" = -d && echo 2");
    EXPECT_EQ(GetTovHDDS(), 2);
}

TEST_F(DriveCount, failureIsTheWaitStatusWhateverWasPrinted)
{
    root::stub("pelparam", "echo 2; exit 1");
    EXPECT_EQ(GetTovHDDS(), 256);
    root::stub("pelparam", "exit 3");
    EXPECT_EQ(GetTovHDDS(), 768);
    fs::remove("/stubs/pelparam");
    EXPECT_EQ(GetTovHDDS(), 32512) << "there is no such command";
    EXPECT_EQ(watch::calls(),
              (Lines{countLine, removeLine, countLine, removeLine, countLine, removeLine}));
    EXPECT_EQ(root::list("/tmp"), Lines{});
}

TEST_F(DriveCount, shellThatCannotStartIsTracedAndTheFileStays)
{
    root::writeFile(countFile, "4");
    watch::answer("sudo pelparam", -1, EAGAIN);
    EXPECT_EQ(GetTovHDDS(), -1);
    EXPECT_EQ(watch::calls(), (Lines{countLine, failedCount("Resource temporarily unavailable")}));
    EXPECT_EQ(root::readFile(countFile), "4");
}

TEST_F(DriveCount, countReapedElsewhereIsAFailureToo)
{
    stubOutput("pelparam", "2\n");
    std::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(GetTovHDDS(), -1);
    EXPECT_EQ(watch::calls(), (Lines{countLine, failedCount("No child processes")}));
    EXPECT_EQ(root::readFile(countFile), "2\n");
}

TEST_F(DriveCount, unreadableOutputIsTracedAndCountsAsOneDrive)
{
    stubOutput("pelparam", "2\n");
    watch::after("sudo pelparam", [&] { close(countFile); });
    EXPECT_EQ(GetTovHDDS(), 1);
    EXPECT_EQ(watch::calls(), (Lines{countLine, unopenedCount("Permission denied"), removeLine}));
    EXPECT_EQ(root::list("/tmp"), Lines{kTraces});
}

TEST_F(DriveCount, outputThatIsGoneIsTracedAndCountsAsOneDrive)
{
    stubOutput("pelparam", "2\n");
    watch::after("sudo pelparam", [&] { fs::remove(countFile); });
    EXPECT_EQ(GetTovHDDS(), 1);
    EXPECT_EQ(watch::calls(),
              (Lines{countLine, unopenedCount("No such file or directory"), removeLine}));
}

TEST_F(DriveCount, failureCountsMoreThanOutputThatIsGone)
{
    root::stub("pelparam", "exit 2");
    watch::after("sudo pelparam", [&] { fs::remove(countFile); });
    EXPECT_EQ(GetTovHDDS(), 512);
    EXPECT_EQ(watch::calls(),
              (Lines{countLine, unopenedCount("No such file or directory"), removeLine}));
}

TEST_F(DriveCount, folderInTheOutputsPlaceHoldsNoCount)
{
    stubOutput("pelparam", "2\n");
    watch::after("sudo pelparam", [&] { replaceByFolder(countFile); });
    EXPECT_EQ(GetTovHDDS(), 1);
    EXPECT_EQ(watch::calls(), (Lines{countLine, removeLine}));
    EXPECT_TRUE(root::exists(countFile)) << "it is not removed";
    EXPECT_EQ(GetTovHDDS(), 512) << "the shell cannot open it";
}

TEST_F(DriveCount, fullDiskIsAFailureOfTheCommand)
{
    stubOutput("pelparam", "2\n");
    root::fillDisk("/tmp");
    EXPECT_EQ(GetTovHDDS(), 256);
    EXPECT_EQ(watch::calls(), (Lines{countLine, removeLine}));
    EXPECT_EQ(root::list("/tmp"), Lines{"filler"});
}

// ---- GetInternalDiskCap -----------------------------------------------------------------------

class DiskCapacity : public Drives {
  protected:
    const std::string fdiskLine = "fdisk -lu /dev/sda | grep /dev/sda: > " + kWorkFile;
    const std::string mdadmLine = "mdadm --detail /dev/md0 | grep GiB > " + kWorkFile;
    const std::string disk = "Disk /dev/sda: 500.1 GB, 500107862016 bytes\n";
    const std::string mirror = "        Array Size : 976630464 (931.51 GiB 1000.20 GB)\n";

    void SetUp() override
    {
        Drives::SetUp();
        stubOutput("fdisk", "\n" + disk + "255 heads, 63 sectors/track\n/dev/sda1  63  96389\n");
        stubOutput("mdadm",
                   "/dev/md0:\n        Raid Level : raid1\n" + mirror + "  State : clean\n");
        stubOutput("pelparam", "1\n");
    }

    [[nodiscard]] static std::string tracedLine(const std::string& line)
    {
        return trace("GetInternalDiskCap() system: " + line);
    }

    [[nodiscard]] static std::string tracedOutput(const std::string& output)
    {
        return trace("GetInternalDiskCap() buf: " + output);
    }

    [[nodiscard]] static std::string tracedSize(int gigabytes)
    {
        return trace("GetInternalDiskCap: " + std::to_string(gigabytes) + " GB");
    }

    [[nodiscard]] static std::string unremoved(const std::string& reason)
    {
        return trace("cannot remove file " + kWorkFile + ": " + reason);
    }

    /// The calls up to the count, if fdisk has printed this line for the disk.
    [[nodiscard]] Lines asked(const std::string& output, int gigabytes,
                              const std::string& shown) const
    {
        return {tracedLine(fdiskLine),
                fdiskLine,
                tracedOutput(output),
                trace("Drive cap: " + std::to_string(gigabytes) + " GB -- ptr: " + shown),
                countLine,
                removeLine};
    }

    [[nodiscard]] Lines asked() const { return asked(disk, 500, disk.substr(disk.find("500.1"))); }

    /// The calls up to the count, if no size was found in this output.
    [[nodiscard]] Lines askedInVain(const std::string& output) const
    {
        return {tracedLine(fdiskLine), fdiskLine, tracedOutput(output), countLine, removeLine};
    }

    void expectFigure(const std::string& output, int capacity)
    {
        stubOutput("fdisk", output);
        EXPECT_EQ(GetInternalDiskCap(), capacity) << output;
    }

    void expectMirror(const std::string& output, int capacity)
    {
        stubOutput("mdadm", output);
        EXPECT_EQ(GetInternalDiskCap(), capacity) << output;
    }
};

TEST_F(DiskCapacity, oneDriveIsAsLargeAsFdiskSays)
{
    EXPECT_EQ(GetInternalDiskCap(), 500);
    EXPECT_EQ(watch::calls(), asked());
    EXPECT_EQ(root::list("/tmp"), (Lines{kTraces, "vokcontrol2.tmp"}));
    EXPECT_EQ(root::readFile(kWorkFile), disk);
}

TEST_F(DiskCapacity, unknownCountIsTreatedLikeOneDrive)
{
    stubOutput("pelparam", "-3\n");
    EXPECT_EQ(GetInternalDiskCap(), 500);
    EXPECT_EQ(watch::calls(), asked());
    EXPECT_TRUE(root::exists(kWorkFile));

    watch::restart();
    watch::answer("sudo pelparam", -1, EAGAIN);
    EXPECT_EQ(GetInternalDiskCap(), 500);
    Lines calls = asked();
    calls.back() = failedCount("Resource temporarily unavailable");
    EXPECT_EQ(watch::calls(), calls);
    EXPECT_EQ(root::readFile(kWorkFile), disk);
}

TEST_F(DiskCapacity, twoDrivesAreAMirrorOfMdadmsSize)
{
    stubOutput("pelparam", "2\n");
    EXPECT_EQ(GetInternalDiskCap(), 1000);
    EXPECT_EQ(watch::calls(),
              join({asked(), {tracedLine(mdadmLine), mdadmLine, tracedSize(1000)}}));
    EXPECT_EQ(root::list("/tmp"), Lines{kTraces});
}

TEST_F(DiskCapacity, withAnyOtherCountFdisksSizeCounts)
{
    for (const char* count : {"0\n", "3\n", "4\n", "none\n"}) {
        watch::restart();
        stubOutput("pelparam", count);
        EXPECT_EQ(GetInternalDiskCap(), 500) << count;
        EXPECT_EQ(watch::calls(), join({asked(), {tracedSize(500)}})) << count;
        EXPECT_EQ(root::list("/tmp"), Lines{kTraces});
    }
}

TEST_F(DiskCapacity, withAFailedCountFdisksSizeCounts)
{
    root::stub("pelparam", "echo 2; exit 1");
    EXPECT_EQ(GetInternalDiskCap(), 500);
    EXPECT_EQ(watch::calls(), join({asked(), {tracedSize(500)}}));
}

TEST_F(DiskCapacity, sizeIsTheNumberAfterTheDisksName)
{
    expectFigure("/dev/sda: 320 GB\n", 320);
    expectFigure("/dev/sda:   64 GB\n", 64);
    expectFigure("/dev/sda: 1,5 TB\n", 1);
    expectFigure("/dev/sda: 7 /dev/sda: 8\n", 7);
    expectFigure("/dev/sda:9 /dev/sda: 8\n", 8);
    expectFigure("/dev/sda: 1\n/dev/sda: 2\n", 1);
    expectFigure("/dev/sdb: 3\n/dev/sda: 4\n", 4);
}

TEST_F(DiskCapacity, sizeOfFdiskWithoutANumberIsZero)
{
    stubOutput("fdisk", "/dev/sda: unknown\n");
    EXPECT_EQ(GetInternalDiskCap(), 0);
    EXPECT_EQ(watch::calls(), asked("/dev/sda: unknown\n", 0, "unknown\n"));
}

TEST_F(DiskCapacity, diskNameWithoutItsBlankIsNotFound)
{
    stubOutput("fdisk", "/dev/sda:500 GB\n");
    EXPECT_EQ(GetInternalDiskCap(), 0);
    EXPECT_EQ(watch::calls(), askedInVain("/dev/sda:500 GB\n"));
}

TEST_F(DiskCapacity, onlyTwoHundredFiftyFiveCharactersOfFdisksLineCount)
{
    expectFigure(std::string(244, '#') + "/dev/sda: 12\n", 1);
    expectFigure(std::string(245, '#') + "/dev/sda: 12\n", 0);
    expectFigure(std::string(246, '#') + "/dev/sda: 12\n", 0);
}

TEST_F(DiskCapacity, numberIsSixteenBitsWide)
{
    expectFigure("/dev/sda: 65535 GB\n", 65535);
    expectFigure("/dev/sda: 65536 GB\n", 0);
    expectFigure("/dev/sda: -1 GB\n", 65535);
    stubOutput("pelparam", "3\n");
    stubOutput("fdisk", "/dev/sda: 70000 GB\n");
    watch::restart();
    EXPECT_EQ(GetInternalDiskCap(), 4464);
    EXPECT_EQ(watch::calls(),
              join({asked("/dev/sda: 70000 GB\n", 70000, "70000 GB\n"), {tracedSize(70000)}}));
}

TEST_F(DiskCapacity, sizeOfFdiskBeyondThirtyTwoBitsKeepsItsLowBits)
{
    stubOutput("fdisk", "/dev/sda: 4294967796 GB\n");
    EXPECT_EQ(GetInternalDiskCap(), 500);
    EXPECT_EQ(watch::calls(), asked("/dev/sda: 4294967796 GB\n", 500, "4294967796 GB\n"));
    expectFigure("/dev/sda: 4294967295 GB\n", 65535);
    expectFigure("/dev/sda: 99999999999999999999 GB\n", 65535);
    expectFigure("/dev/sda: -99999999999999999999 GB\n", 0);
}

TEST_F(DiskCapacity, fdiskWithoutOutputMeansZero)
{
    for (const char* script : {"exit 1", "exit 127", "echo Disk /dev/sdb: 500 GB"}) {
        root::stub("fdisk", script);
        watch::restart();
        EXPECT_EQ(GetInternalDiskCap(), 0) << script;
        EXPECT_EQ(watch::calls(), askedInVain("")) << script;
        EXPECT_EQ(root::readFile(kWorkFile), "");
    }
}

TEST_F(DiskCapacity, failingFdiskThatPrintsASizeCounts)
{
    root::stub("fdisk", "cat /stubs/fdisk.out; exit 1");
    EXPECT_EQ(GetInternalDiskCap(), 500);
    EXPECT_EQ(watch::calls(), asked());
}

TEST_F(DiskCapacity, shellThatCannotStartForFdiskMeansZero)
{
    for (const int error : {EAGAIN, ECHILD}) {
        root::writeFile(kWorkFile, disk);
        watch::restart();
        watch::answer("fdisk", -1, error);
        EXPECT_EQ(GetInternalDiskCap(), 0) << "an older file's size is not taken";
        EXPECT_EQ(watch::calls(), (Lines{tracedLine(fdiskLine), fdiskLine, countLine, removeLine}));
        EXPECT_EQ(root::readFile(kWorkFile), disk);
    }
}

TEST_F(DiskCapacity, mirrorNeedsNoFdisk)
{
    stubOutput("pelparam", "2\n");
    watch::answer("fdisk", -1, EAGAIN);
    EXPECT_EQ(GetInternalDiskCap(), 1000);
    EXPECT_EQ(watch::calls(), (Lines{tracedLine(fdiskLine), fdiskLine, countLine, removeLine,
                                     tracedLine(mdadmLine), mdadmLine, tracedSize(1000)}));
}

TEST_F(DiskCapacity, everyLineReapedElsewhereFails)
{
    stubOutput("pelparam", "2\n");
    std::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(GetInternalDiskCap(), 0);
    EXPECT_EQ(watch::calls(), (Lines{tracedLine(fdiskLine), fdiskLine, countLine,
                                     failedCount("No child processes")}));
    EXPECT_EQ(root::readFile(kWorkFile), disk);
}

TEST_F(DiskCapacity, fdisksOutputThatCannotBeReadMeansZero)
{
    stubOutput("pelparam", "3\n");
    watch::after("fdisk", [] { close(kWorkFile); });
    EXPECT_EQ(GetInternalDiskCap(), 0);
    EXPECT_EQ(watch::calls(), join({askedInVain(""), {tracedSize(0)}}));
    EXPECT_FALSE(root::exists(kWorkFile));
}

TEST_F(DiskCapacity, fdisksOutputThatIsGoneMeansZeroAndCannotBeRemoved)
{
    stubOutput("pelparam", "3\n");
    watch::after("fdisk", [] { fs::remove(kWorkFile); });
    EXPECT_EQ(GetInternalDiskCap(), 0);
    EXPECT_EQ(watch::calls(),
              join({askedInVain(""), {unremoved("No such file or directory"), tracedSize(0)}}));
}

TEST_F(DiskCapacity, folderInTheOutputsPlaceMeansZeroAndCannotBeRemoved)
{
    stubOutput("pelparam", "2\n");
    replaceByFolder(kWorkFile);
    EXPECT_EQ(GetInternalDiskCap(), 0);
    EXPECT_EQ(watch::calls(), join({askedInVain(""),
                                    {tracedLine(mdadmLine), mdadmLine,
                                     unremoved("Directory not empty"), tracedSize(0)}}));
    EXPECT_TRUE(root::exists(kWorkFile));
}

TEST_F(DiskCapacity, workFileThatCannotBeRemovedIsTraced)
{
    stubOutput("pelparam", "3\n");
    watch::after("sudo rm", [] { fs::permissions("/tmp", fs::perms(0555)); });
    EXPECT_EQ(GetInternalDiskCap(), 500);
    EXPECT_EQ(watch::calls(), join({asked(), {unremoved("Permission denied"), tracedSize(500)}}));
    EXPECT_EQ(root::readFile(kWorkFile), disk);
}

TEST_F(DiskCapacity, fullDiskMeansZero)
{
    root::writeFile(root::kTraceFile, "");
    root::fillDisk("/tmp");
    EXPECT_EQ(GetInternalDiskCap(), 0);
    EXPECT_EQ(watch::calls(), join({askedInVain(""), {tracedSize(0)}})) << "pelparam fails as well";
    EXPECT_EQ(root::list("/tmp"), (Lines{kTraces, "filler"}));
}

// ---- The mirror -------------------------------------------------------------------------------

class MirrorCapacity : public DiskCapacity {
  protected:
    void SetUp() override
    {
        DiskCapacity::SetUp();
        stubOutput("pelparam", "2\n");
    }

    /// The calls for a mirror of this size.
    [[nodiscard]] Lines askedForMirror(int gigabytes) const
    {
        return join({asked(), {tracedLine(mdadmLine), mdadmLine, tracedSize(gigabytes)}});
    }
};

TEST_F(MirrorCapacity, sizeIsTheNumberFourCharactersAfterGiB)
{
    expectMirror("(931.51 GiB 1000.20 GB)\n", 1000);
    expectMirror("(931.51 GiB, 1000.20 GB)\n", 1000);
    expectMirror("1 GiB 2 GiB 3\n", 2);
    expectMirror("1 GiB 2\n1 GiB 3\n", 2);
    expectMirror("GiB12345\n", 2345);
    expectMirror("1 GiB 65537 GB\n", 1);
}

TEST_F(MirrorCapacity, sizeBeyondThirtyTwoBitsKeepsItsLowBits)
{
    expectMirror("(1 GiB    4294967796 GB)\n", 500);
    expectMirror("(1 GiB    99999999999999999999 GB)\n", 65535);
}

TEST_F(MirrorCapacity, sizeWithoutANumberIsZero)
{
    expectMirror("(931.51 GiB - )\n", 0);
    expectMirror("931.51 GiB\n", 0);
    expectMirror("931.51 GiB\n1000", 0);
    EXPECT_EQ(watch::calls().back(), tracedSize(0));
}

TEST_F(MirrorCapacity, onlyTwoHundredFiftyFiveCharactersOfMdadmsLineCount)
{
    expectMirror(std::string(250, '#') + "GiB 12\n", 1);
    expectMirror(std::string(251, '#') + "GiB 12\n", 0);
    expectMirror(std::string(252, '#') + "GiB 12\n", 0);
    expectMirror(std::string(253, '#') + "GiB 12\n", 500);
}

TEST_F(MirrorCapacity, mdadmWithoutOutputLeavesFdisksSize)
{
    for (const char* script : {"exit 1", "exit 127", "echo 'Array Size : 976630464 KiB'"}) {
        root::stub("mdadm", script);
        watch::restart();
        EXPECT_EQ(GetInternalDiskCap(), 500) << script;
        EXPECT_EQ(watch::calls(), askedForMirror(500)) << script;
        EXPECT_FALSE(root::exists(kWorkFile));
    }
}

TEST_F(MirrorCapacity, failingMdadmThatPrintsASizeCounts)
{
    root::stub("mdadm", "cat /stubs/mdadm.out; exit 1");
    EXPECT_EQ(GetInternalDiskCap(), 1000);
}

TEST_F(MirrorCapacity, shellThatCannotStartForMdadmLeavesFdisksSize)
{
    for (const int error : {EAGAIN, ECHILD}) {
        watch::restart();
        watch::answer("mdadm", -1, error);
        EXPECT_EQ(GetInternalDiskCap(), 500);
        EXPECT_EQ(watch::calls(), askedForMirror(500));
        EXPECT_FALSE(root::exists(kWorkFile));
    }
}

TEST_F(MirrorCapacity, fdisksOutputIsNeverTakenForMdadms)
{
    stubOutput("fdisk", "/dev/sda: 500 GB, 465.76 GiB, 500107862016 bytes\n");
    watch::answer("mdadm", -1, EAGAIN);
    EXPECT_EQ(GetInternalDiskCap(), 500);
    EXPECT_EQ(watch::calls().back(), tracedSize(500));
}

TEST_F(MirrorCapacity, unreadableOutputOfMdadmLeavesFdisksSize)
{
    watch::after("mdadm", [] { close(kWorkFile); });
    EXPECT_EQ(GetInternalDiskCap(), 500);
    EXPECT_EQ(watch::calls(), askedForMirror(500));
    EXPECT_FALSE(root::exists(kWorkFile));
}

TEST_F(MirrorCapacity, missingOutputOfMdadmLeavesFdisksSizeAndCannotBeRemoved)
{
    watch::after("mdadm", [] { fs::remove(kWorkFile); });
    EXPECT_EQ(GetInternalDiskCap(), 500);
    EXPECT_EQ(watch::calls(), join({asked(),
                                    {tracedLine(mdadmLine), mdadmLine,
                                     unremoved("No such file or directory"), tracedSize(500)}}));
}

// ---- GetUserCapUsage --------------------------------------------------------------------------

class ShareUsage : public root::Test {
  protected:
    const std::string command = "du -sk \"/share/Music\" > " + kWorkFile;
    const std::string tracedCommand = trace("GetUserCapUsage system: " + command);
    const Lines callsOfFailure = {tracedCommand, command, tracedCommand,
                                  trace("GetUserCapUsage() return error 0xFFFFFFFF")};

    void expectUsage(const std::string& kibibytes, int expectedSize, char expectedUnit)
    {
        watch::restart();
        root::stubUsage("Music", kibibytes);
        int size = -7;
        char unit = '#';
        EXPECT_EQ(GetUserCapUsage("Music", &size, &unit), 0) << kibibytes;
        EXPECT_EQ(size, expectedSize) << kibibytes;
        EXPECT_EQ(unit, expectedUnit) << kibibytes;
        const std::string result = std::to_string(expectedSize) + expectedUnit;
        EXPECT_EQ(watch::calls(), (Lines{tracedCommand, command, tracedCommand,
                                         trace("GetUserCapUsage system: " + result)}))
            << kibibytes;
        EXPECT_EQ(root::list("/tmp"), Lines{kTraces});
    }

    void expectFailure()
    {
        int size = -7;
        char unit = '#';
        EXPECT_EQ(GetUserCapUsage("Music", &size, &unit), -1);
        EXPECT_EQ(size, -7);
        EXPECT_EQ(unit, '#');
        EXPECT_EQ(watch::calls(), callsOfFailure);
    }
};

TEST_F(ShareUsage, unitsChangeAtTheirThresholds)
{
    expectUsage("0", 0, 'K');
    expectUsage("1024", 1024, 'K');
    expectUsage("1025", 1, 'M');
    expectUsage("1999", 1, 'M');
    expectUsage("2000", 2, 'M');
    expectUsage("1000000", 1000, 'M');
    expectUsage("1000001", 1, 'G');
    expectUsage("1999999", 1, 'G');
    expectUsage("2000000", 2, 'G');
    expectUsage("70000000000", 70000, 'G');
}

TEST_F(ShareUsage, leadingNumberOfTheFirstLineCounts)
{
    expectUsage("  12x34", 12, 'K');
    expectUsage("none", 0, 'K');
    expectUsage("-5", -5, 'K');
    expectUsage("7\t/share/other\n9", 7, 'K');
}

TEST_F(ShareUsage, onlyTwoHundredFiftyFiveCharactersOfTheLineCount)
{
    expectUsage(std::string(254, ' ') + "12", 1, 'K');
    expectUsage(std::string(255, ' ') + "12", 0, 'K');
}

TEST_F(ShareUsage, realShareIsMeasured)
{
    fs::create_directories("/share/My Music");
    root::writeFile("/share/My Music/song", std::string(40000, 's'));
    int size = 0;
    char unit = '#';
    EXPECT_EQ(GetUserCapUsage("My Music", &size, &unit), 0);
    EXPECT_TRUE(size == 40 || size == 44) << "with or without the folder's own block: " << size;
    EXPECT_EQ(unit, 'K');
    EXPECT_EQ(watch::calls().at(1), "du -sk \"/share/My Music\" > " + kWorkFile);
}

TEST_F(ShareUsage, duWithoutOutputIsAFailure)
{
    for (const char* script : {"exit 0", "exit 1", "exit 127"}) {
        watch::restart();
        root::stub("du", script);
        expectFailure();
        EXPECT_EQ(root::list("/tmp"), Lines{kTraces}) << script;
    }
}

TEST_F(ShareUsage, failingDuThatPrintsANumberCounts)
{
    root::stub("du", "echo 33; exit 1");
    int size = 0;
    char unit = '#';
    EXPECT_EQ(GetUserCapUsage("Music", &size, &unit), 0);
    EXPECT_EQ(size, 33);
    EXPECT_EQ(unit, 'K');
}

TEST_F(ShareUsage, shellThatCannotStartIsAFailure)
{
    root::writeFile(kWorkFile, "55");
    watch::answer("du", -1, EAGAIN);
    expectFailure();
}

TEST_F(ShareUsage, duReapedElsewhereCounts)
{
    std::signal(SIGCHLD, SIG_IGN);
    expectUsage("21", 21, 'K');
}

TEST_F(ShareUsage, outputThatIsGoneIsAFailure)
{
    root::stubUsage("Music", "21");
    watch::after("du", [] { fs::remove(kWorkFile); });
    expectFailure();
}

TEST_F(ShareUsage, outputThatIsGoneAfterTheSecondTraceIsAFailure)
{
    root::stubUsage("Music", "21");
    watch::after(
        "du", [] { watch::after("echo \"GetUserCapUsage system", [] { fs::remove(kWorkFile); }); });
    expectFailure();
}

TEST_F(ShareUsage, unreadableOutputIsAFailure)
{
    root::stubUsage("Music", "21");
    watch::after("du", [] { close(kWorkFile); });
    expectFailure();
    EXPECT_FALSE(root::exists(kWorkFile));
}

TEST_F(ShareUsage, folderInTheOutputsPlaceIsAFailure)
{
    root::stubUsage("Music", "21");
    replaceByFolder(kWorkFile);
    expectFailure();
    EXPECT_TRUE(root::exists(kWorkFile));
}

TEST_F(ShareUsage, fullDiskIsAFailure)
{
    root::stubUsage("Music", "21");
    root::writeFile(root::kTraceFile, "");
    root::fillDisk("/tmp");
    expectFailure();
    EXPECT_EQ(root::list("/tmp"), (Lines{kTraces, "filler"}));
}

TEST_F(ShareUsage, longestNameOfAListIsPassedOnWhole)
{
    const std::string name(4095, 'n');
    int size = 0;
    char unit = '#';
    EXPECT_EQ(GetUserCapUsage(name.c_str(), &size, &unit), -1);
    EXPECT_EQ(watch::calls().at(1), "du -sk \"/share/" + name + "\" > " + kWorkFile);
}

// ---- Numbers beyond 32 bits -------------------------------------------------------------------

TEST_F(DriveCount, numberBeyondThirtyTwoBitsKeepsItsLowBits)
{
    expectCount("2147483647\n", 2147483647);
    expectCount("2147483648\n", -2147483647 - 1);
    expectCount("4294967298\n", 2);
    expectCount("99999999999\n", 1215752191);
    expectCount("99999999999999999999\n", -1);
}

TEST_F(DiskCapacity, numberBeyondThirtyTwoBitsKeepsItsLowBits)
{
    expectFigure("/dev/sda: 4294967797 GB\n", 501);
    expectFigure("/dev/sda: 99999999999 GB\n", 1215752191 % 65536);
    stubOutput("pelparam", "4294967299\n");
    stubOutput("fdisk", "/dev/sda: 2147483649 GB\n");
    watch::restart();
    EXPECT_EQ(GetInternalDiskCap(), 1);
    EXPECT_EQ(watch::calls(),
              join({asked("/dev/sda: 2147483649 GB\n", -2147483647, "2147483649 GB\n"),
                    {tracedSize(-2147483647)}}));
}

TEST_F(MirrorCapacity, numberBeyondThirtyTwoBitsKeepsItsLowBits)
{
    stubOutput("pelparam", "4294967298\n");
    expectMirror("(931.51 GiB 4294968296 GB)\n", 1000);
    EXPECT_EQ(watch::calls(), askedForMirror(1000));
}

TEST_F(ShareUsage, numberBeyondThirtyTwoBitsIsMeasured)
{
    expectUsage("2147483648", 2147, 'G');
    expectUsage("4294967296", 4294, 'G');
    expectUsage("99999999999", 99999, 'G');
}

} // namespace
