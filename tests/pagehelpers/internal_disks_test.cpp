// SPDX-License-Identifier: MIT
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/support/root.h"
#include "vokcontrol.h"

namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

std::string comments(const Lines& messages)
{
    std::string text;
    for (const std::string& message : messages) {
        text += "//<!-- " + message + "-->\n";
    }
    return text;
}

/// An rm that prints when it runs.
const std::string kTellingRemoval = "echo removing; /usr/bin/rm \"$@\"";

void stubReport(const std::string& report)
{
    root::writeFile("/stubs/report", report);
    root::stub("php", "cat /stubs/report >\"$3\"");
}

/// An internal disk's block.
std::string disk(const std::string& index, const std::string& name)
{
    return "  <HDDInfo>\n    <hddIndex>" + index + "</hddIndex>\n" +
           "    <manufacturerVid>Vendor</manufacturerVid>\n    <modelDevName>" + name +
           "</modelDevName>\n  </HDDInfo>\n";
}

std::string usbDisk(const std::string& index, const std::string& name)
{
    return "  <usbHdd>\n    <hddIndex>" + index + "</hddIndex>\n    <modelDevName>" + name +
           "</modelDevName>\n  </usbHdd>\n";
}

class Report : public root::Test {
  protected:
    const std::string output = root::workFile("getInternalHDDDev");
    const std::string fetch =
        "sudo /usr/bin/php /etc/inc/api_system.php tovGetSystemStatus " + output;
    const std::string removal = "sudo rm -f " + output;
};

// ---- getInternalHDDDev --------------------------------------------------------------------------

class DiskNames : public Report {
  protected:
    void expectNames(const std::string& report, const std::string& names)
    {
        watch::restart();
        stubReport(report);
        expectAnswer(names, {}, {fetch, removal});
    }

    /// @param messages  what is said before the result
    void expectAnswer(const std::string& names, Lines messages, const Lines& calls)
    {
        messages.push_back("getInternalHDDDev() cRet:" + names);
        testing::internal::CaptureStdout();
        EXPECT_EQ(getInternalHDDDev(), names);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), comments(messages));
        EXPECT_EQ(watch::calls(), calls);
        EXPECT_FALSE(root::exists(output));
    }
};

TEST_F(DiskNames, nameIsOneOfAnInternalDisk)
{
    expectNames(disk("0", "sda"), "sda");
    expectNames("<status>\n" + disk("0", "sda") + "</status>\n", "sda");
}

TEST_F(DiskNames, withoutInternalDisksTheNamesAreEmpty)
{
    expectNames("", "");
    expectNames("<status>\n</status>\n", "");
    expectNames(usbDisk("0", "sdc"), "");
    expectNames("</HDDInfo>\n<modelDevName>sda</modelDevName>\n", "");
}

TEST_F(DiskNames, namesAreJoinedInTheirOrder)
{
    expectNames(disk("0", "sda") + disk("1", "sdb"), "sdasdb");
    expectNames(disk("0", "sdd") + disk("1", "sdc") + disk("2", "sdb") + disk("3", "sda"),
                "sddsdcsdbsda");
    std::string report;
    std::string names;
    for (const char* name : {"sda", "sdb", "sdc", "sdd", "sde", "sdf", "sdg", "sdh", "sdi"}) {
        report += disk("0", name);
        names += name;
    }
    expectNames(report, names);
}

TEST_F(DiskNames, usbDisksAreLeftOut)
{
    expectNames(disk("0", "sda") + usbDisk("1", "sdc") + disk("2", "sdb") + usbDisk("3", "sdd"),
                "sdasdb");
}

TEST_F(DiskNames, onlyANameClosesADisk)
{
    expectNames("<HDDInfo>\n</HDDInfo>\n<usbHdd>\n<modelDevName>sdc</modelDevName>\n", "sdc");
    expectNames("<HDDInfo>\n<HDDInfo>\n<modelDevName>sda</modelDevName>\n"
                "<modelDevName>sdb</modelDevName>\n",
                "sda");
}

TEST_F(DiskNames, diskMayFollowThePreviousNameAtOnce)
{
    expectNames("<HDDInfo>\n<modelDevName>sda</modelDevName>\n<HDDInfo>\n"
                "<modelDevName>sdb</modelDevName>\n",
                "sdasdb");
    expectNames("<HDDInfo>\n<modelDevName>sda</modelDevName>\n<modelDevName>sdb</modelDevName>\n"
                "<HDDInfo>\n<modelDevName>sdc</modelDevName>\n",
                "sdasdc");
}

TEST_F(DiskNames, nameOnTheOpeningLineIsIgnored)
{
    expectNames("<HDDInfo><modelDevName>sda</modelDevName>\n<modelDevName>sdb</modelDevName>\n",
                "sdb");
    expectNames("<HDDInfo>\n<modelDevName>sda</modelDevName><HDDInfo>\n"
                "<modelDevName>sdb</modelDevName>\n",
                "sda");
}

TEST_F(DiskNames, nameIsTheTextBeforeTheClosingTag)
{
    expectNames("<HDDInfo>\nold > <b>sd>a</modelDevName>x></modelDevName>\n", "a");
    expectNames("<HDDInfo>\n<modelDevName></modelDevName>\n", "");
    expectNames("<HDDInfo>\nsda</modelDevName>\n<modelDevName>sdb</modelDevName>\n", "");
    expectNames("<HDDInfo>\n<modelDevName>sda\n</modelDevName>\n", "");
    expectNames("<HDDInfo>\n<modelDevName>sda</modelDevName>", "sda");
}

TEST_F(DiskNames, textThatIsAlmostAClosingTagIsIgnored)
{
    expectNames("<HDDInfo>\n<modelDevName>sda</modelDevNames>\n<modelDevName>sdb</modelDevName>\n",
                "sdb");
}

TEST_F(DiskNames, nameMayBeLong)
{
    for (const std::size_t size : {39U, 40U, 41U, 482U}) {
        const std::string name(size, 'n');
        expectNames("<HDDInfo>\n<modelDevName>" + name + "</modelDevName>\n", name);
    }
}

TEST_F(DiskNames, longLineIsReadInPieces)
{
    expectNames("<HDDInfo>\n<modelDevName>" + std::string(600, 'n') + "</modelDevName>\n" +
                    "<modelDevName>sdb</modelDevName>\n",
                "");
    expectNames(std::string(502, ' ') + "<HDDInfo><modelDevName>sda</modelDevName>\n", "sda");
    expectNames(std::string(503, ' ') + "<HDDInfo>\n<modelDevName>sda</modelDevName>\n", "");
}

TEST_F(DiskNames, namesAreCutAt511Characters)
{
    const std::string name(200, 'n');
    expectNames(disk("0", name) + disk("1", name) + disk("2", name) + disk("3", "sdx"),
                std::string(511, 'n'));
}

TEST_F(DiskNames, namesOfAnEarlierCallAreNotKept)
{
    expectNames(disk("0", "sda") + disk("1", "sdb"), "sdasdb");
    expectNames(disk("0", "sdc"), "sdc");
    expectNames("", "");
}

TEST_F(DiskNames, resultIsAlwaysTheSameBuffer)
{
    stubReport(disk("0", "sda"));
    testing::internal::CaptureStdout();
    const char* first = getInternalHDDDev();
    EXPECT_EQ(getInternalHDDDev(), first);
    testing::internal::GetCapturedStdout();
}

TEST_F(DiskNames, failingScriptGivesNoNames)
{
    expectNames(disk("0", "sda"), "sda");
    watch::restart();
    root::stub("php", "cat /stubs/report >\"$3\"; exit 3");
    expectAnswer("", {"getInternalHDDDev() failed system(" + fetch + "), iRet: 768"},
                 {fetch, removal});
}

TEST_F(DiskNames, scriptThatCannotRunGivesNoNames)
{
    root::writeFile(output, disk("0", "sda"));
    watch::answer("sudo /usr/bin/php", -1, EAGAIN);
    expectAnswer("", {"getInternalHDDDev() failed system(" + fetch + "), iRet: -1"},
                 {fetch, removal});
}

TEST_F(DiskNames, scriptReapedElsewhereGivesNoNames)
{
    stubReport(disk("0", "sda"));
    std::signal(SIGCHLD, SIG_IGN);
    expectAnswer("", {"getInternalHDDDev() failed system(" + fetch + "), iRet: -1"},
                 {fetch, removal});
}

TEST_F(DiskNames, missingReportGivesNoNames)
{
    root::stub("php", "exit 0");
    expectAnswer(
        "",
        {"getInternalHDDDev() failed open file " + output + ", syserr:No such file or directory"},
        {fetch, removal});
}

TEST_F(DiskNames, unreadableReportGivesNoNames)
{
    root::stub("php", "cat /stubs/report >\"$3\"; chmod 000 \"$3\"");
    root::writeFile("/stubs/report", disk("0", "sda"));
    expectAnswer("",
                 {"getInternalHDDDev() failed open file " + output + ", syserr:Permission denied"},
                 {fetch, removal});
}

TEST_F(DiskNames, resultIsPrintedBeforeTheReportIsRemoved)
{
    stubReport(disk("0", "sda"));
    root::stub("rm", kTellingRemoval);
    EXPECT_EQ(root::printedPieces(getInternalHDDDev),
              (Lines{comments({"getInternalHDDDev() cRet:sda"}), "removing\n"}));
    EXPECT_FALSE(root::exists(output));
}

TEST_F(DiskNames, failureIsPrintedAtOnce)
{
    root::stub("php", "exit 3");
    root::stub("rm", kTellingRemoval);
    EXPECT_EQ(root::printedPieces(getInternalHDDDev),
              (Lines{comments({"getInternalHDDDev() failed system(" + fetch + "), iRet: 768"}),
                     comments({"getInternalHDDDev() cRet:"}), "removing\n"}));
}

TEST_F(DiskNames, reportIsClosedBeforeItIsRemoved)
{
    stubReport(disk("0", "sda"));
    bool isOpen = true;
    watch::after(removal, [&] { isOpen = root::isOpen(output); });
    testing::internal::CaptureStdout();
    EXPECT_STREQ(getInternalHDDDev(), "sda");
    testing::internal::GetCapturedStdout();
    EXPECT_FALSE(isOpen);
}

// ---- getInternalHDDIndex ------------------------------------------------------------------------

class DiskIndices : public Report {
  protected:
    using Indices = std::array<std::int32_t, 3>;

    /// The caller's two slots, and the memory after them.
    static constexpr Indices kBefore = {-77, -88, -99};

    static std::string found(int index, int place)
    {
        return "getInternalHDDIndex() found index:" + std::to_string(index) +
               " -- at location: " + std::to_string(place);
    }

    static std::string slots(const Indices& indices)
    {
        return "getInternalHDDIndex() " + std::to_string(indices[0]) + " , " +
               std::to_string(indices[1]);
    }

    void expectIndices(const std::string& report, const Indices& indices, const Lines& messages)
    {
        watch::restart();
        stubReport(report);
        expectGood(indices, messages);
    }

    /// @param messages  what is said before the result
    void expectGood(const Indices& indices, Lines messages)
    {
        messages.push_back(slots(indices));
        Indices actual = kBefore;
        testing::internal::CaptureStdout();
        EXPECT_EQ(getInternalHDDIndex(actual.data()), 0);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), comments(messages));
        EXPECT_EQ(actual, indices);
        EXPECT_EQ(watch::calls(), (Lines{fetch, removal}));
        EXPECT_FALSE(root::exists(output));
    }

    void expectFailure(const std::string& result)
    {
        Indices actual = kBefore;
        testing::internal::CaptureStdout();
        EXPECT_EQ(getInternalHDDIndex(actual.data()), -1);
        EXPECT_EQ(
            testing::internal::GetCapturedStdout(),
            comments({"getInternalHDDIndex() failed system(" + fetch + "), iRet: " + result}));
        EXPECT_EQ(actual, kBefore);
        EXPECT_EQ(watch::calls(), Lines{fetch});
    }
};

TEST_F(DiskIndices, firstTwoDisksFillTheSlots)
{
    expectIndices(disk("3", "sda") + disk("5", "sdb"), {3, 5, -99}, {found(3, 0), found(5, 1)});
}

TEST_F(DiskIndices, slotWithoutADiskKeepsItsValue)
{
    expectIndices("", {-77, -88, -99}, {});
    expectIndices(usbDisk("4", "sdc"), {-77, -88, -99}, {});
    expectIndices(disk("3", "sda"), {3, -88, -99}, {found(3, 0)});
}

TEST_F(DiskIndices, furtherDisksAreOnlyPrinted)
{
    std::string report;
    Lines messages;
    for (int i = 0; i < 9; ++i) {
        report += disk(std::to_string(10 + i), "sd");
        messages.push_back(found(10 + i, i));
    }
    expectIndices(report, {10, 11, -99}, messages);
}

TEST_F(DiskIndices, usbDisksAreLeftOut)
{
    expectIndices(usbDisk("7", "sdc") + disk("1", "sda") + usbDisk("8", "sdd") + disk("2", "sdb"),
                  {1, 2, -99}, {found(1, 0), found(2, 1)});
}

TEST_F(DiskIndices, onlyAnIndexClosesADisk)
{
    expectIndices("<HDDInfo>\n</HDDInfo>\n<usbHdd>\n<hddIndex>4</hddIndex>\n", {4, -88, -99},
                  {found(4, 0)});
    expectIndices("<HDDInfo>\n<hddIndex>4</hddIndex>\n<hddIndex>5</hddIndex>\n", {4, -88, -99},
                  {found(4, 0)});
    expectIndices("<HDDInfo>\n<HDDInfo>\n<hddIndex>4</hddIndex>\n<hddIndex>5</hddIndex>\n",
                  {4, -88, -99}, {found(4, 0)});
}

TEST_F(DiskIndices, indexMayBeOnTheOpeningLine)
{
    expectIndices("<HDDInfo><hddIndex>4</hddIndex></HDDInfo>\n<hddIndex>5</hddIndex>\n",
                  {4, -88, -99}, {found(4, 0)});
    expectIndices("<hddIndex>6</hddIndex><HDDInfo>\n", {6, -88, -99}, {found(6, 0)});
}

TEST_F(DiskIndices, indexIsADecimalNumber)
{
    expectIndices(disk("-2", "sda") + disk(" 08", "sdb"), {-2, 8, -99},
                  {found(-2, 0), found(8, 1)});
    expectIndices(disk("x", "sda") + disk("", "sdb"), {0, 0, -99}, {found(0, 0), found(0, 1)});
    expectIndices(disk("2147483647", "sda") + disk("-2147483648", "sdb"),
                  {2147483647, -2147483647 - 1, -99},
                  {found(2147483647, 0), found(-2147483647 - 1, 1)});
}

TEST_F(DiskIndices, longLineIsReadInPieces)
{
    expectIndices("<HDDInfo>\n" + std::string(500, ' ') + "<hddIndex>12</hddIndex>\n",
                  {1, -88, -99}, {found(1, 0)});
    expectIndices("<HDDInfo>\n" + std::string(502, ' ') + "<hddIndex>12</hddIndex>\n",
                  {-77, -88, -99}, {});
}

TEST_F(DiskIndices, failingScriptLeavesItsFile)
{
    root::writeFile("/stubs/report", disk("3", "sda"));
    root::stub("php", "cat /stubs/report >\"$3\"; exit 3");
    expectFailure("768");
    EXPECT_EQ(root::readFile(output), disk("3", "sda"));
}

TEST_F(DiskIndices, scriptThatCannotRunIsAFailure)
{
    watch::answer("sudo /usr/bin/php", -1, EAGAIN);
    expectFailure("-1");
}

TEST_F(DiskIndices, scriptReapedElsewhereIsAFailure)
{
    stubReport(disk("3", "sda"));
    std::signal(SIGCHLD, SIG_IGN);
    expectFailure("-1");
    EXPECT_EQ(root::readFile(output), disk("3", "sda"));
}

TEST_F(DiskIndices, missingReportIsNoFailure)
{
    root::stub("php", "exit 0");
    expectGood(kBefore, {"getInternalHDDIndex() failed open file " + output +
                         ", syserr:No such file or directory"});
}

TEST_F(DiskIndices, unreadableReportIsNoFailure)
{
    root::writeFile("/stubs/report", disk("3", "sda"));
    root::stub("php", "cat /stubs/report >\"$3\"; chmod 000 \"$3\"");
    expectGood(kBefore,
               {"getInternalHDDIndex() failed open file " + output + ", syserr:Permission denied"});
}

TEST_F(DiskIndices, eachIsPrintedAtOnceAndAllBeforeTheReportIsRemoved)
{
    stubReport(disk("3", "sda") + disk("5", "sdb"));
    root::stub("rm", kTellingRemoval);
    Indices indices = kBefore;
    bool isOpen = true;
    watch::after(removal, [&] { isOpen = root::isOpen(output); });
    EXPECT_EQ(root::printedPieces([&] { EXPECT_EQ(getInternalHDDIndex(indices.data()), 0); }),
              (Lines{comments({found(3, 0)}), comments({found(5, 1)}), comments({slots({3, 5, 0})}),
                     "removing\n"}));
    EXPECT_FALSE(isOpen);
    EXPECT_FALSE(root::exists(output));
}

TEST_F(DiskIndices, missingReportIsPrintedAtOnceToo)
{
    root::stub("php", "exit 0");
    root::stub("rm", kTellingRemoval);
    Indices indices = kBefore;
    EXPECT_EQ(root::printedPieces([&] { EXPECT_EQ(getInternalHDDIndex(indices.data()), 0); }),
              (Lines{comments({"getInternalHDDIndex() failed open file " + output +
                               ", syserr:No such file or directory"}),
                     comments({slots(kBefore)}), "removing\n"}));
}

TEST_F(DiskIndices, numberBeyondThirtyTwoBitsKeepsItsLowBits)
{
    expectIndices(disk("2147483648", "sda") + disk("99999999999", "sdb") +
                      disk("4294967296", "sdc"),
                  {-2147483647 - 1, 1215752191, -99},
                  {found(-2147483647 - 1, 0), found(1215752191, 1), found(0, 2)});
}

// ---- printTovHDDs -------------------------------------------------------------------------------

class DriveCount : public root::Test {
  protected:
    const std::string output = root::workFile("printTovHDDs");
    const std::string ask = "sudo pelparam -d > " + output;
    const std::string removal = "sudo rm -f " + output;

    static std::string script(const std::string& count)
    {
        return "function tov_hdds()\n{\n\treturn " + count + ";\n}\n";
    }

    void expect(int result, const std::string& printed, const Lines& calls)
    {
        testing::internal::CaptureStdout();
        EXPECT_EQ(printTovHDDs(), result);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), printed);
        EXPECT_EQ(watch::calls(), calls);
    }

    void expectCount(const std::string& printed, const std::string& count)
    {
        watch::restart();
        root::writeFile("/stubs/count", printed);
        root::stub("pelparam", "[ \"$*\" = -d ] && cat /stubs/count");
        expect(0, script(count), {ask, removal});
        EXPECT_FALSE(root::exists(output));
    }
};

TEST_F(DriveCount, firstLineIsTheCount)
{
    expectCount("2\n", "2");
    expectCount("4", "4");
    expectCount("0\n", "0");
    expectCount(" 12 drives\n", "12");
    expectCount("2\n4\n", "2");
    expectCount("-1\n", "-1");
}

TEST_F(DriveCount, lineThatIsNoNumberIsZero)
{
    expectCount("none\n", "0");
    expectCount("\n", "0");
    expectCount("\n3\n", "0");
    expectCount("drives: 2\n", "0");
}

TEST_F(DriveCount, withoutALineItIsOne)
{
    expectCount("", "1");
}

TEST_F(DriveCount, firstLineCountsUpTo511Characters)
{
    expectCount(std::string(510, '0') + "23\n", "2");
    expectCount(std::string(511, ' ') + "5\n", "0");
}

TEST_F(DriveCount, numberBeyondThirtyTwoBitsKeepsItsLowBits)
{
    expectCount("2147483647\n", "2147483647");
    expectCount("2147483648\n", "-2147483648");
    expectCount("4294967296\n", "0");
    expectCount("99999999999\n", "1215752191");
    expectCount("99999999999999999999\n", "-1");
    expectCount("-99999999999999999999\n", "0");
}

TEST_F(DriveCount, outputIsClosedAndRemovedBeforeTheScriptIsPrinted)
{
    root::stub("pelparam", "echo 2");
    bool isOpen = true;
    watch::after(removal, [&] {
        isOpen = root::isOpen(output);
        std::printf("removed\n");
    });
    expect(0, "removed\n" + script("2"), {ask, removal});
    EXPECT_FALSE(isOpen);
}

TEST_F(DriveCount, failuresArePrintedAtOnceAndBeforeTheRemoval)
{
    root::stub("rm", kTellingRemoval);
    watch::after(ask, [this] { fs::remove(output); });
    EXPECT_EQ(root::printedPieces(printTovHDDs),
              (Lines{comments({"printTovHDDs failed open file " + output +
                               ", strerr: No such file or directory"}),
                     "removing\n", script("1")}));
    watch::answer(ask, -1, EAGAIN);
    EXPECT_EQ(root::printedPieces(printTovHDDs),
              (Lines{comments({"printTovHDDs failed system(" + ask +
                               "), iRet:-1, strerr: Resource temporarily unavailable"}),
                     script("1")}));
}

TEST_F(DriveCount, outputOfAFailingToolCounts)
{
    root::stub("pelparam", "echo 3; exit 2");
    expect(512, script("3"), {ask, removal});
    watch::restart();
    root::stub("pelparam", "exit 1");
    expect(256, script("1"), {ask, removal});
}

TEST_F(DriveCount, toolThatCannotRunGivesOne)
{
    root::writeFile(output, "7\n");
    watch::answer(ask, -1, EAGAIN);
    expect(-1,
           comments({"printTovHDDs failed system(" + ask +
                     "), iRet:-1, strerr: Resource temporarily unavailable"}) +
               script("1"),
           {ask});
    EXPECT_EQ(root::readFile(output), "7\n");
}

TEST_F(DriveCount, toolReapedElsewhereGivesOne)
{
    root::stub("pelparam", "echo 2");
    std::signal(SIGCHLD, SIG_IGN);
    expect(
        -1,
        comments({"printTovHDDs failed system(" + ask + "), iRet:-1, strerr: No child processes"}) +
            script("1"),
        {ask});
}

TEST_F(DriveCount, missingOutputGivesOne)
{
    root::stub("pelparam", "echo 2");
    watch::after(ask, [this] { fs::remove(output); });
    expect(0,
           comments({"printTovHDDs failed open file " + output +
                     ", strerr: No such file or directory"}) +
               script("1"),
           {ask, removal});
}

TEST_F(DriveCount, unreadableOutputGivesOne)
{
    root::stub("pelparam", "echo 2");
    watch::after(ask, [this] { fs::permissions(output, fs::perms::none); });
    expect(0,
           comments({"printTovHDDs failed open file " + output + ", strerr: Permission denied"}) +
               script("1"),
           {ask, removal});
    EXPECT_FALSE(root::exists(output));
}

} // namespace
