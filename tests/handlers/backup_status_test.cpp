// SPDX-License-Identifier: MIT
#include "handlers/backup_status.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <gtest/gtest.h>

#include "core/core.h"
#include "handlers/drives.h"
#include "sharestatus/sharestatus.h"
#include "tests/support/request.h"

namespace {

namespace fs = std::filesystem;

using request::frame;
using request::kWorkFile;
using request::Lines;
using request::Outcome;
using root::join;
using root::kVariables;
using root::le16;
using root::le32;
using root::replaceByFolder;
using root::trace;
using root::zeros;

const std::string kDateLine = "date +%m%d%Y > /tmp/vokcontrol.tmp";
const std::string kReportFolder = "/etc/pelconfig/vokcontrol/__bksts/";
const std::string kNotRemoved = "cannot remove file /tmp/vokcontrol2.tmp: ";

std::string byte(int value)
{
    return std::string(1, static_cast<char>(value));
}

/// Fills a frame up to the last byte of fin_buf.
std::string upToTheEnd(const std::string& start, char filler)
{
    return start + std::string(4096 - start.size(), filler);
}

/// Today as date prints it.
std::string today()
{
    const std::time_t now = std::time(nullptr);
    std::tm time = {};
    ::gmtime_r(&now, &time);
    std::array<char, 16> text{};
    std::strftime(text.data(), text.size(), "%m%d%Y", &time);
    return text.data();
}

void stubDate(const std::string& printed)
{
    root::writeFile("/stubs/today", printed);
    root::stub("date", "cat /stubs/today");
}

// ---- subs -------------------------------------------------------------------------------------

class VariableReport : public request::Test {
  protected:
    void SetUp() override
    {
        request::Test::SetUp();
        root::writeFile(kVariables, "a=b\n");
        stubDate("03072025\n");
    }

    static std::string makeFrame(int length, int state, const std::string& name)
    {
        return "subs " + byte(length) + " " + byte(state) + name;
    }

    static std::string statusFrame(std::uint32_t code) { return "subs " + le32(code) + zeros(1); }

    static std::string statusTrace(const std::string& code)
    {
        return trace("SendReturnStatus errCode 0x" + code + " -- fwrite return: 10");
    }

    /// The trace of the name and the length, before the length is checked.
    static Lines received(const std::string& name, int length)
    {
        return {trace("cmd_subs line: " + name + " -- " + std::to_string(length))};
    }

    static Lines dated(const Lines& calls)
    {
        return join({calls, {trace("cmd_subs system(" + kDateLine + ") "), kDateLine}});
    }

    static Lines stored(const Lines& calls)
    {
        return join({dated(calls), {trace("return good 0"), statusTrace("00000000")}});
    }

    static void expectStored(const std::string& request, const Lines& calls,
                             const std::string& variable)
    {
        SCOPED_TRACE(variable);
        root::writeFile(kVariables, "a=b\n");
        expectReply(request::process(request), statusFrame(0), calls);
        EXPECT_EQ(root::readFile(kVariables), "a=b\n" + variable + "\n");
    }

    /// Expects that a report is stored.
    void expectStored(int length, int state, const std::string& name, const std::string& variable)
    {
        expectStored(makeFrame(length, state, name), stored(received(name, length)), variable);
    }

    static void expectRefused(int length)
    {
        SCOPED_TRACE(length);
        expectReply(request::process(makeFrame(length, 3, "anna\n")),
                    statusFrame(request::kMalformed),
                    join({received("anna\n", length), {statusTrace("FF000003")}}));
        EXPECT_EQ(root::readFile(kVariables), "a=b\n");
        EXPECT_EQ(root::list("/etc/pelconfig"), (Lines{"system_var", "vokcontrol"}));
    }

    /// A report of state 3 for anna, after the test has changed how calls end.
    static Outcome report(const std::function<void()>& intervene = [] {})
    {
        request::load(makeFrame(6, 3, "anna\n"));
        intervene();
        return request::run();
    }

    /// The calls of a report of anna's, up to the date.
    static Lines annaDated() { return dated(received("anna\n", 6)); }

    static void expectDate(const Outcome& outcome, const std::string& date,
                           const Lines& traced = {})
    {
        expectReply(outcome, statusFrame(0),
                    join({annaDated(), traced, {trace("return good 0"), statusTrace("00000000")}}));
        EXPECT_EQ(root::readFile(kVariables), "a=b\n__bkanna=3" + date + "\n");
    }

    static void expectNoDate(const Outcome& outcome)
    {
        expectReply(outcome, statusFrame(0xC2000003),
                    join({annaDated(), {statusTrace("C2000003")}}));
        EXPECT_EQ(root::readFile(kVariables), "a=b\n");
    }

    static void expectNotSaved(const Outcome& outcome)
    {
        expectEnd(outcome, statusFrame(0xC2000002) + statusFrame(0),
                  join({annaDated(),
                        {trace("failed saving bk status -1 "), statusTrace("C2000002"),
                         trace("return good -1"), statusTrace("00000000")}}));
    }
};

TEST_F(VariableReport, stateAndDateAreKeptUnderTheUsersName)
{
    expectStored(6, 3, "anna\n", "__bkanna=303072025");
    EXPECT_EQ(request::leftBehind(), Lines{});
    EXPECT_EQ(root::list("/etc/pelconfig"), (Lines{"system_var", "system_var_bak", "system_var_lck",
                                                   "system_var_tmp", "vokcontrol"}));
    EXPECT_EQ(root::list(kReportFolder), Lines{});
}

TEST_F(VariableReport, newReportReplacesTheFormerOne)
{
    for (const char* user : {"anna", "bob"}) {
        EXPECT_EQ(request::process(makeFrame(6, 3, std::string(user) + "\n")).answer,
                  statusFrame(0));
    }
    stubDate("12312026\n");
    EXPECT_EQ(request::process(makeFrame(6, 0, "anna\n")).answer, statusFrame(0));
    EXPECT_EQ(root::readFile(kVariables), "a=b\n__bkanna=012312026\n__bkbob=303072025\n");
}

TEST_F(VariableReport, todayIsTheDate)
{
    fs::remove("/stubs/date");
    const std::string before = today();
    EXPECT_EQ(report().answer, statusFrame(0));
    const std::string variables = root::readFile(kVariables);
    EXPECT_TRUE(variables == "a=b\n__bkanna=3" + before + "\n" ||
                variables == "a=b\n__bkanna=3" + today() + "\n")
        << variables;
}

TEST_F(VariableReport, lengthsFromThreeToSixtySixAreTaken)
{
    for (const int length : {3, 4, 9, 11, 65, 66}) {
        expectStored(length, 3, "anna\n", "__bkanna=303072025");
    }
}

TEST_F(VariableReport, otherLengthsAreRefused)
{
    for (const int length : {0, 1, 2, 67, 68, 127, 128, 255}) {
        expectRefused(length);
    }
}

TEST_F(VariableReport, lengthOfTenEndsTheLineAndTheNextLineIsReadIntoIt)
{
    expectStored(makeFrame('\n', 3, "johannes\nmore\n"), stored(received("johannes\n", 10)),
                 "__bkjohannes=303072025");
    // Only the length decides: it is not compared with the name.
    expectStored(makeFrame('\n', 3, "anna\n"), stored(received("anna\n", 10)),
                 "__bkanna=303072025");
}

TEST_F(VariableReport, lengthOfTenAtTheEndGivesAnEmptyName)
{
    expectStored("subs \n", stored(received("", 10)), "__bk=003072025");
}

TEST_F(VariableReport, lengthOfTenReadsToTheEndIfNoNewlineFollows)
{
    const std::string seen(1999 - std::string("cmd_subs line: ").size(), 'n');
    Lines calls = received("", 10);
    calls.back() = trace("cmd_subs line: " + seen);
    expectStored(upToTheEnd(makeFrame('\n', 3, ""), 'n'), stored(calls),
                 "__bk" + std::string(64, 'n') + "=303072025");
}

TEST_F(VariableReport, lengthOfTenReadsOneMoreLineUpToTheEndOfTheBuffer)
{
    EXPECT_EQ(request::process(makeFrame('\n', 3, "johannes\nmore\n")).answer, statusFrame(0));
    EXPECT_EQ(request::unread(), "more");
    EXPECT_EQ(request::process(upToTheEnd(makeFrame('\n', 3, ""), 'n')).answer, statusFrame(0));
    EXPECT_EQ(request::unread(), "n");
    EXPECT_EQ(request::process(makeFrame(11, 3, "johannes\nmore\n")).answer, statusFrame(0));
    EXPECT_EQ(request::unread(), "more");
}

TEST_F(VariableReport, lineThatEndsAfterTheLengthHasNeitherStateNorName)
{
    expectStored("subs \x06\n\x03"
                 "anna\n",
                 stored(received("", 6)), "__bk=003072025");
    expectStored("subs \n\n\x03"
                 "anna\n",
                 stored(received("", 10)), "__bk=003072025");
}

TEST_F(VariableReport, shortLineHasNoLength)
{
    for (const char* line : {"subs\n", "subs", "subs "}) {
        SCOPED_TRACE(line);
        expectReply(request::process(line), statusFrame(request::kMalformed),
                    join({received("", 0), {statusTrace("FF000003")}}));
    }
}

TEST_F(VariableReport, earlierRequestsBytesAreNotReadAgain)
{
    EXPECT_EQ(request::process(makeFrame(6, 3, "anna\n")).answer, statusFrame(0));
    expectStored("subs \x06\n", stored(received("", 6)), "__bk=003072025");
}

TEST_F(VariableReport, firstDigitOfTheStateIsKept)
{
    expectStored(6, 0, "anna\n", "__bkanna=003072025");
    expectStored(6, 3, "anna\n", "__bkanna=303072025");
    expectStored(6, 9, "anna\n", "__bkanna=903072025");
    expectStored(6, 12, "anna\n", "__bkanna=103072025");
    expectStored(6, '7', "anna\n", "__bkanna=503072025");
    expectStored(6, 128, "anna\n", "__bkanna=103072025");
    expectStored(6, 255, "anna\n", "__bkanna=203072025");
}

TEST_F(VariableReport, stateOfTenEndsTheLineBeforeTheName)
{
    expectStored(makeFrame(6, '\n', "anna\n"), stored(received("", 6)), "__bk=103072025");
    expectStored(makeFrame('\n', '\n', "anna\n"), stored(received("", 10)), "__bk=103072025");
}

TEST_F(VariableReport, namesOfAllSizesAreTakenAndCutAtSixtyFourBytes)
{
    for (const std::size_t size : {0U, 1U, 60U, 61U, 63U, 64U, 65U, 67U, 68U, 500U}) {
        const std::string name(size, 'n');
        expectStored(66, 3, name + "\n", "__bk" + name.substr(0, 64) + "=303072025");
    }
}

TEST_F(VariableReport, nameIsTakenUnchanged)
{
    expectStored(6, 3, "an\\na\n", "__bkan\\na=303072025");
    expectStored(6, 3, "\xC3\x89lise B\n", "__bk\xC3\x89lise B=303072025");
    expectStored(6, 3, "%s%n\n", "__bk%s%n=303072025");
}

TEST_F(VariableReport, nameEndsAtAZeroByteOrTheLinesEnd)
{
    const std::string line = "anna" + zeros(1) + "bob\n";
    expectStored(makeFrame(6, 3, line), stored(received("anna", 6)), "__bkanna=303072025");
    expectStored(makeFrame(6, 3, "anna"), stored(received("anna", 6)), "__bkanna=303072025");
}

TEST_F(VariableReport, lineWithoutANewlineIsOneName)
{
    const std::string seen(1999 - std::string("cmd_subs line: ").size(), 'n');
    Lines calls = received("n", 66);
    calls.back() = trace("cmd_subs line: " + seen);
    expectStored(upToTheEnd(makeFrame(66, 3, ""), 'n'), stored(calls),
                 "__bk" + std::string(64, 'n') + "=303072025");
}

// ---- subs: the date ---------------------------------------------------------------------------

TEST_F(VariableReport, eightCharactersOfTheFirstLineAreTheDate)
{
    stubDate("03072025");
    expectDate(report(), "03072025");
    root::writeFile(kVariables, "a=b\n");
    stubDate("030720259\n");
    expectDate(report(), "03072025");
    root::writeFile(kVariables, "a=b\n");
    stubDate(std::string(4000, '7') + "\n");
    expectDate(report(), "77777777");
    root::writeFile(kVariables, "a=b\n");
    stubDate("03072025\n12312026\n");
    expectDate(report(), "03072025");
}

TEST_F(VariableReport, shorterDateIsKeptWithoutItsNewline)
{
    stubDate("0307\n");
    expectDate(report(), "0307");
}

TEST_F(VariableReport, failingDateGivesZerosOrWhatItPrinted)
{
    for (const char* script : {"exit 1", "exit 127", "true"}) {
        root::writeFile(kVariables, "a=b\n");
        root::stub("date", script);
        expectDate(report(), "00000000");
        EXPECT_FALSE(root::exists(kWorkFile));
    }
    root::writeFile(kVariables, "a=b\n");
    root::stub("date", "echo 03072025; exit 1");
    expectDate(report(), "03072025");
}

TEST_F(VariableReport, shellThatCannotStartStoresNothing)
{
    root::writeFile(kWorkFile, "old");
    expectNoDate(report([] { watch::answer("date", -1, EAGAIN); }));
    EXPECT_EQ(root::readFile(kWorkFile), "old");
    EXPECT_EQ(root::list("/etc/pelconfig"), (Lines{"system_var", "vokcontrol"}));
}

TEST_F(VariableReport, failureLeavesTheWorkFileAlone)
{
    root::writeFile(kWorkFile, "old");
    expectRefused(2);
    expectNoDate(report([] { watch::answer("date", -1, EAGAIN); }));
    EXPECT_EQ(root::readFile(kWorkFile), "old");
}

TEST_F(VariableReport, dateReapedElsewhereStoresNothing)
{
    expectNoDate(report([] { std::signal(SIGCHLD, SIG_IGN); }));
    EXPECT_EQ(root::readFile(kWorkFile), "03072025\n");
}

TEST_F(VariableReport, missingOutputOfDateGivesZeros)
{
    expectDate(report([] { watch::after("date", [] { fs::remove(kWorkFile); }); }), "00000000");
}

TEST_F(VariableReport, unreadableOutputGivesZerosAndStays)
{
    expectDate(
        report([] { watch::after("date", [] { fs::permissions(kWorkFile, fs::perms(0200)); }); }),
        "00000000");
    EXPECT_TRUE(root::exists(kWorkFile));
}

TEST_F(VariableReport, folderInTheOutputsPlaceGivesZerosAndCannotBeRemoved)
{
    replaceByFolder(kWorkFile);
    expectDate(report(), "00000000", {trace(kNotRemoved + "Directory not empty")});
    EXPECT_TRUE(root::exists(kWorkFile));
}

TEST_F(VariableReport, outputThatCannotBeRemovedIsTracedUnderAnotherName)
{
    expectDate(
        report([] { watch::after("date", [] { fs::permissions("/tmp", fs::perms(0555)); }); }),
        "03072025", {trace(kNotRemoved + "Permission denied")});
    EXPECT_EQ(root::readFile(kWorkFile), "03072025\n");
}

// ---- subs: the save ---------------------------------------------------------------------------

TEST_F(VariableReport, failedSaveIsAnsweredTwice)
{
    fs::remove(kVariables);
    expectNotSaved(report());
    EXPECT_FALSE(root::exists(kVariables));
}

TEST_F(VariableReport, unreadableVariablesAreAFailedSave)
{
    fs::permissions(kVariables, fs::perms(0200));
    expectNotSaved(report());
}

TEST_F(VariableReport, folderInTheVariablesPlaceIsAFailedSave)
{
    replaceByFolder(kVariables);
    expectNotSaved(report());
}

TEST_F(VariableReport, emptyVariablesTakeTheirFirstLine)
{
    root::writeFile(kVariables, "");
    EXPECT_EQ(report().answer, statusFrame(0));
    EXPECT_EQ(root::readFile(kVariables), "__bkanna=303072025\n");
}

TEST_F(VariableReport, variablesRemovedWhileDateRunsAreAFailedSave)
{
    expectNotSaved(report([] { watch::after("date", [] { fs::remove(kVariables); }); }));
}

TEST_F(VariableReport, fullDiskIsAFailedSaveAndLeavesTheVariables)
{
    expectNotSaved(report([] { root::fillDisk("/etc/pelconfig"); }));
    EXPECT_EQ(root::readFile(kVariables), "a=b\n");
}

// ---- sub1 -------------------------------------------------------------------------------------

class FileReport : public request::Test {
  protected:
    const std::string file = kReportFolder + "__bkanna";

    void SetUp() override
    {
        request::Test::SetUp();
        stubDate("03072025\n");
    }

    static std::string makeFrame(int state, const std::string& name)
    {
        return frame("sub1", 2, byte(state) + " " + name);
    }

    /// The calls up to the date, for a name in its stored form.
    static Lines dated(const std::string& name)
    {
        return {trace("user name = __bk" + name),
                trace("cmd_sub1 system(" + kDateLine +
                      ") nlen = " + std::to_string(4 + name.size()) + " "),
                kDateLine};
    }

    static Lines stored(const std::string& name)
    {
        return join({dated(name), {trace("return good 0")}});
    }

    /// @param name  in its stored form
    static void expectStored(const std::string& request, const std::string& name,
                             const std::string& content)
    {
        SCOPED_TRACE(name);
        const Outcome outcome = request::process(request);
        expectEnd(outcome, le32(0), stored(name), {});
        EXPECT_EQ(root::readFile(kReportFolder + "__bk" + name), content);
    }

    static void expectRefused(const std::string& request)
    {
        root::writeFile(kWorkFile, "old");
        expectError(request::process(request), le32(request::kMalformed), request::kMalformed, {});
        EXPECT_EQ(root::list(kReportFolder), Lines{});
    }

    /// Sends a request with NAME after its state, and compares the bytes that it does not read.
    static void expectUnread(const std::string& name, const std::string& rest)
    {
        EXPECT_EQ(request::process(makeFrame(3, name)).result, 0);
        EXPECT_EQ(request::unread(), rest) << name;
    }

    static Outcome report(const std::function<void()>& intervene = [] {})
    {
        request::load(makeFrame(3, "anna\n"));
        intervene();
        return request::run();
    }

    void expectDate(const Outcome& outcome, const std::string& date, const Lines& traced = {})
    {
        expectReply(outcome, le32(0), join({dated("anna"), traced, {trace("return good 0")}}));
        EXPECT_EQ(root::readFile(file), "3" + date);
    }

    static void expectNoDate(const Outcome& outcome)
    {
        expectError(outcome, le32(0xC2000003), 0xC2000003, dated("anna"));
        EXPECT_EQ(root::list(kReportFolder), Lines{});
    }

    void expectNotSaved(const Outcome& outcome, const std::string& reason,
                        const std::string& name = "anna")
    {
        const std::string path = kReportFolder + "__bk" + name;
        const Lines failure = {
            trace("failed saving bk status to: " + path + "- system err:" + reason)};
        expectError(outcome, le32(0xC2000002), 0xC2000002, join({dated(name), failure}));
    }
};

TEST_F(FileReport, stateAndDateAreKeptInTheUsersFile)
{
    expectStored(makeFrame(3, "anna\n"), "anna", "303072025");
    EXPECT_EQ(root::list(kReportFolder), Lines{"__bkanna"});
    EXPECT_EQ(root::list("/etc/pelconfig"), Lines{"vokcontrol"});
}

TEST_F(FileReport, newReportReplacesTheFormerOne)
{
    root::writeFile(file, "backup did not finish, and this is how far it came\n");
    root::writeFile(kReportFolder + "__bkbob", "112312026");
    expectStored(makeFrame(9, "anna\n"), "anna", "903072025");
    EXPECT_EQ(root::readFile(kReportFolder + "__bkbob"), "112312026");
}

TEST_F(FileReport, collectionFindsTheReport)
{
    EXPECT_EQ(report().answer, le32(0));
    std::array<char, 12> record{};
    GetUserBkStatus(record.data(), "anna");
    EXPECT_EQ(std::string(record.begin(), record.end()), zeros(3) + "030720253");
}

TEST_F(FileReport, todayIsTheDate)
{
    fs::remove("/stubs/date");
    const std::string before = today();
    EXPECT_EQ(report().answer, le32(0));
    const std::string content = root::readFile(file);
    EXPECT_TRUE(content == "3" + before || content == "3" + today()) << content;
}

TEST_F(FileReport, firstDigitOfTheStateIsKept)
{
    const std::vector<std::pair<int, char>> states = {
        {0, '0'}, {3, '3'}, {9, '9'}, {10, '1'}, {12, '1'}, {'7', '5'}, {128, '1'}, {255, '2'}};
    for (const auto& [state, digit] : states) {
        expectStored(makeFrame(state, "anna\n"), "anna", digit + std::string("03072025"));
    }
}

TEST_F(FileReport, byteAfterTheStateIsIgnored)
{
    for (const char ignored : {'\0', '\n', '\\', '\xFF'}) {
        expectStored(frame("sub1", 2, "\x03" + std::string(1, ignored) + "anna\n"), "anna",
                     "303072025");
    }
}

TEST_F(FileReport, namesOfUpToSixtyBytesAreKept)
{
    for (const std::size_t size : {0U, 1U, 2U, 59U, 60U}) {
        const std::string name(size, 'n');
        expectStored(makeFrame(3, name + "\n"), name, "303072025");
    }
}

TEST_F(FileReport, longerNamesAreRefused)
{
    for (const std::size_t size : {61U, 62U, 64U, 65U, 66U, 67U, 68U, 500U}) {
        expectRefused(makeFrame(3, std::string(size, 'n') + "\n"));
    }
}

TEST_F(FileReport, backslashesAreDroppedAndDoNotCount)
{
    expectStored(makeFrame(3, "an\\na\n"), "anna", "303072025");
    expectStored(makeFrame(3, "\\\\anna\\\n"), "anna", "303072025");
    expectStored(makeFrame(3, std::string(100, '\\') + "\n"), "", "303072025");
    const std::string name(60, 'n');
    expectStored(makeFrame(3, name + std::string(100, '\\') + "\n"), name, "303072025");
    fs::remove_all(kReportFolder);
    fs::create_directory(kReportFolder);
    expectRefused(makeFrame(3, std::string(100, '\\') + name + "\\n\n"));
}

TEST_F(FileReport, zeroByteEndsTheName)
{
    expectStored(makeFrame(3, "anna" + zeros(1) + "bob\n"), "anna", "303072025");
    expectStored(makeFrame(3, "anna"), "anna", "303072025");
    expectStored(makeFrame(3, ""), "", "303072025");
}

TEST_F(FileReport, nameIsKeptUnchanged)
{
    expectStored(makeFrame(3, "\xC3\x89lise B\n"), "\xC3\x89lise B", "303072025");
    expectStored(makeFrame(3, "%s%n\n"), "%s%n", "303072025");
    expectStored(makeFrame(3, "\xFF\n"), "\xFF", "303072025");
    expectStored(makeFrame(3, "a\r\n"), "a\r", "303072025");
}

TEST_F(FileReport, requestThatIsOnlyALineReportsAnEmptyName)
{
    expectStored(frame("sub1", 2), "", "003072025");
}

TEST_F(FileReport, nameThatTheRequestsEndCutsOffIsRefused)
{
    // The request's last byte is the name's fourth.
    const std::string line = "sub1 " + le32(2) + std::string(4080, ' ') + "\n";
    const std::string whole = line + "\x03 anna";
    ASSERT_EQ(whole.size(), 4096U);
    expectRefused(whole);
    expectRefused(line + "\x03 ann\\");
    expectStored(line + "\x03 ann\n", "ann", "303072025");
    expectStored(line + "\x03 ann" + zeros(1), "ann", "303072025");
}

TEST_F(FileReport, requestWithoutRoomForANameIsRefused)
{
    // After the longest line two bytes are left: the state and the ignored one.
    expectRefused(upToTheEnd("sub1 " + le32(2), ' '));
    const std::string line = "sub1 " + le32(2) + std::string(4084, ' ') + "\n";
    ASSERT_EQ(line.size(), 4094U);
    expectRefused(line + "\x03 ");
    expectRefused(line + "\x03\n");
}

TEST_F(FileReport, nameWithoutAnEndIsRefused)
{
    expectRefused(upToTheEnd(makeFrame(3, ""), 'n'));
    expectRefused(upToTheEnd(makeFrame(3, ""), '\\'));
}

TEST_F(FileReport, nameIsReadToItsEnd)
{
    expectUnread("anna\nmore\n", "more");
    expectUnread("anna" + zeros(1) + "more\n", "more");
    expectUnread("\nmore\n", "more");
    expectUnread(std::string(100, 'n') + "\nmore\n", "more");
}

// ---- sub1: the date ---------------------------------------------------------------------------

TEST_F(FileReport, eightCharactersOfTheFirstLineAreTheDate)
{
    for (const std::string& printed : {std::string("03072025"), std::string("030720259\n"),
                                       std::string("03072025\n12312026\n")}) {
        stubDate(printed);
        expectDate(report(), "03072025");
    }
    stubDate(std::string(4000, '7'));
    expectDate(report(), "77777777");
}

TEST_F(FileReport, shorterDateIsKeptWithoutItsNewline)
{
    stubDate("0307\n");
    expectDate(report(), "0307");
}

TEST_F(FileReport, failingDateGivesZerosOrWhatItPrinted)
{
    for (const char* script : {"exit 1", "exit 127", "true"}) {
        root::stub("date", script);
        expectDate(report(), "00000000");
        EXPECT_FALSE(root::exists(kWorkFile));
    }
    root::stub("date", "echo 03072025; exit 1");
    expectDate(report(), "03072025");
}

TEST_F(FileReport, shellThatCannotStartStoresNothing)
{
    root::writeFile(kWorkFile, "old");
    expectNoDate(report([] { watch::answer("date", -1, EAGAIN); }));
}

TEST_F(FileReport, dateReapedElsewhereStoresNothing)
{
    expectNoDate(report([] { std::signal(SIGCHLD, SIG_IGN); }));
}

TEST_F(FileReport, missingOutputOfDateGivesZeros)
{
    expectDate(report([] { watch::after("date", [] { fs::remove(kWorkFile); }); }), "00000000");
}

TEST_F(FileReport, unreadableOutputGivesZerosAndStays)
{
    expectDate(
        report([] { watch::after("date", [] { fs::permissions(kWorkFile, fs::perms(0200)); }); }),
        "00000000");
    EXPECT_TRUE(root::exists(kWorkFile));
}

TEST_F(FileReport, folderInTheOutputsPlaceGivesZerosAndCannotBeRemoved)
{
    replaceByFolder(kWorkFile);
    expectDate(report(), "00000000", {trace(kNotRemoved + "Directory not empty")});
    EXPECT_TRUE(root::exists(kWorkFile));
}

TEST_F(FileReport, outputThatCannotBeRemovedIsTracedUnderAnotherName)
{
    expectDate(
        report([] { watch::after("date", [] { fs::permissions("/tmp", fs::perms(0555)); }); }),
        "03072025", {trace(kNotRemoved + "Permission denied")});
    EXPECT_EQ(root::readFile(kWorkFile), "03072025\n");
}

// ---- sub1: the save ---------------------------------------------------------------------------

TEST_F(FileReport, missingFolderIsAFailedSave)
{
    fs::remove(kReportFolder.substr(0, kReportFolder.size() - 1));
    expectNotSaved(report(), "2(No such file or directory)");
    EXPECT_EQ(root::list("/etc/pelconfig/vokcontrol"), Lines{});
}

TEST_F(FileReport, fileThatMayNotBeWrittenIsAFailedSave)
{
    root::writeFile(file, "112312026");
    fs::permissions(file, fs::perms(0444));
    expectNotSaved(report(), "13(Permission denied)");
    EXPECT_EQ(root::readFile(file), "112312026");
}

TEST_F(FileReport, folderInTheFilesPlaceIsAFailedSave)
{
    replaceByFolder(file);
    expectNotSaved(report(), "21(Is a directory)");
}

TEST_F(FileReport, nameWithASlashIsAFailedSave)
{
    const Outcome outcome = request::process(makeFrame(3, "../anna\n"));
    expectNotSaved(outcome, "2(No such file or directory)", "../anna");
    EXPECT_EQ(root::list(kReportFolder), Lines{});
}

TEST_F(FileReport, fullDiskIsAFailedSave)
{
    expectNotSaved(report([] { root::fillDisk("/etc/pelconfig"); }), "28(No space left on device)");
    EXPECT_EQ(root::readFile(file), "");
}

// ---- gub1 -------------------------------------------------------------------------------------

class BackupTable : public request::Test {
  protected:
    static constexpr const char* kMark = "/tmp/bkstart";
    static constexpr int kCapacity = 500;

    const std::string capacityBytes = le16(kCapacity);

    /// The calls of GetInternalDiskCap, recorded once; its own test compares them.
    Lines capacityCalls;

    void SetUp() override
    {
        request::Test::SetUp();
        root::stub("fdisk", "echo 'Disk /dev/sda: 500.1 GB, 500107862016 bytes'");
        root::stub("pelparam", "echo 1");
        root::stub("ps", "echo 12 root pelstatus");
        root::stub("pelstatus", "exit 1");
        EXPECT_EQ(GetInternalDiskCap(), kCapacity);
        capacityCalls = watch::calls();
        EXPECT_EQ(capacityCalls.size(), 6U);
    }

    // ---- Status -------------------------------------------------------------------------------

    static unsigned sum(const std::string& payload)
    {
        unsigned total = 0;
        for (const char c : payload) {
            total += static_cast<unsigned char>(c);
        }
        return total % 16;
    }

    static std::string image(const std::string& payload)
    {
        return le32(static_cast<std::uint32_t>(payload.size()) + 1) + payload +
               byte(static_cast<int>(sum(payload)));
    }

    static void publish(const std::string& payload)
    {
        root::writeFile(root::kStatusFile, image(payload));
    }

    /// Makes the collector publish this.
    static void publishOnRun(const std::string& payload, int exitCode = 0)
    {
        root::writeFile("/stubs/image", image(payload));
        root::stub("pelstatus", "cp /stubs/image " + std::string(root::kStatusFile) + "; exit " +
                                    std::to_string(exitCode));
    }

    static std::string record(unsigned used, const std::string& name)
    {
        return le16(used) + "M030720253" + name + "\n";
    }

    static std::string table(unsigned count, const std::string& records)
    {
        return zeros(5) + le16(count) + zeros(3) + records;
    }

    // ---- Expectations -------------------------------------------------------------------------

    template <class... Values> static std::string format(const char* pattern, Values... values)
    {
        std::array<char, 64> text{};
        std::snprintf(text.data(), text.size(), pattern, values...);
        return text.data();
    }

    static Lines statusMissing(const char* reason = "2(No such file or directory)")
    {
        return {trace("Read_Status_file - failed open file: " + std::string(root::kStatusFile) +
                      " -- " + reason)};
    }

    static Lines statusRead(const std::string& payload, unsigned check)
    {
        const unsigned length = static_cast<unsigned>(payload.size()) + 1;
        return {trace("Read_Status_file " + std::string(root::kStatusFile) +
                      format(" - len1 = %x ", length)),
                trace(format("Read_Status_file - len = %x ", length)),
                trace(format("Read_Status_file - chksum  = %x %x", sum(payload), check))};
    }

    static Lines statusRead(const std::string& payload)
    {
        return statusRead(payload, sum(payload));
    }

    static Lines served(unsigned count, std::size_t size)
    {
        return {trace(format("cmd_gub1 -- numberofuser:%u len = %zu", count, size)),
                counted(count)};
    }

    static std::string counted(unsigned count)
    {
        return trace(format("cmd_gub1(1) -- numberofuser:%u", count));
    }

    static Lines daemonRun() { return {trace("cmd_gub1 -- sys_cmd = pelstatus"), "pelstatus"}; }

    /// The traces of all bytes except the last. A zero byte ends its message.
    static Lines dump(const std::string& bytes)
    {
        Lines calls = {trace("cmd_gub1()  ")};
        for (std::size_t i = 0; i + 1 < bytes.size(); ++i) {
            const unsigned value = static_cast<unsigned char>(bytes[i]);
            const std::string shown = (value == 0) ? "" : std::string(1, bytes[i]);
            calls.push_back(trace(format("%03zu %02X\t", i, value) + shown));
        }
        return calls;
    }

    static Lines daemonFound()
    {
        return {"ps | grep pelstatus> " + root::workFile("startPelStatus"),
                trace("startPelStatus() pelstatus already started  ")};
    }

    static Lines written(std::size_t size)
    {
        return {trace(format("cmd_gub1 -- RetUsersBkStatus return: byte written: %zu", size))};
    }

    static Lines noUser() { return {trace("cmd_gub1 -- RetUsersBkStatus -- No User 0")}; }

    [[nodiscard]] Lines calls(const std::vector<Lines>& parts) const
    {
        return join({capacityCalls, join(parts)});
    }

    [[nodiscard]] std::string header(unsigned count) const
    {
        return "gubr " + le16(count) + capacityBytes + "\n";
    }

    static Outcome ask(const std::function<void()>& intervene = [] {})
    {
        request::load(frame("gub1", 0));
        intervene();
        return request::run();
    }

    /// Expects the answer to a published payload: the bytes that are traced and written.
    void expectServed(const std::string& payload, unsigned count, const std::string& bytes)
    {
        publish(payload);
        const Outcome outcome = ask();
        expectReply(outcome, (count == 0) ? bytes.substr(0, 10) : bytes,
                    calls({statusRead(payload), served(count, payload.size()), dump(bytes),
                           daemonFound(), (count == 0) ? noUser() : written(bytes.size())}));
        EXPECT_EQ(root::readFile(kMark), le32(1));
    }

    /// Expects that the collector ran and that there is still no status.
    void expectNone(const Outcome& outcome, const Lines& look) const
    {
        expectReply(outcome, header(0),
                    calls({look, daemonRun(), look, {counted(0)}, dump(header(0)), noUser()}));
        EXPECT_FALSE(root::exists(kMark));
    }

    /// Expects the same for a payload that the request's own collection published.
    void expectFresh(const std::string& payload, unsigned count, const std::string& bytes)
    {
        fs::remove(root::kStatusFile);
        publishOnRun(payload);
        const Outcome outcome = ask();
        expectReply(outcome, (count == 0) ? bytes.substr(0, 10) : bytes,
                    calls({statusMissing(),
                           daemonRun(),
                           statusRead(payload),
                           {counted(count)},
                           dump(bytes),
                           (count == 0) ? noUser() : written(bytes.size())}));
        EXPECT_FALSE(root::exists(kMark));
    }
};

TEST_F(BackupTable, publishedRecordsAreAnsweredUnchanged)
{
    const std::string records = record(12, "anna") + record(65535, "B\xC3\xA9"
                                                                   "a");
    expectServed(table(2, records), 2, header(2) + records);
    EXPECT_EQ(request::leftBehind(), (Lines{kMark, "/tmp/vokcontrol2.tmp"}));
}

TEST_F(BackupTable, headersOwnBytesAreOverwritten)
{
    expectServed("abcde" + le16(1) + "fgh" + record(1, "anna"), 1, header(1) + record(1, "anna"));
}

TEST_F(BackupTable, publishedCountIsNotCheckedAgainstTheRecords)
{
    expectServed(table(7, record(10, "anna")), 7, header(7) + record(10, "anna"));
    expectServed(table(256, record(10, "anna")), 256, header(256) + record(10, "anna"));
    expectServed(table(0xFFFF, ""), 0xFFFF, header(0xFFFF));
}

TEST_F(BackupTable, recordsAreTracedButNotAnsweredIfTheCountIsZero)
{
    expectServed(table(0, record(1, "anna")), 0, header(0) + record(1, "anna"));
}

TEST_F(BackupTable, tableWithoutSharesIsOnlyAHeader)
{
    expectServed(zeros(10), 0, header(0));
    expectServed(zeros(11), 0, header(0) + zeros(1));
}

TEST_F(BackupTable, shortStatusIsFilledWithZeros)
{
    expectServed("abcde", 0, header(0));
    expectServed("a", 0, header(0));
    expectServed("abcde\x03", 3, header(3));
    expectServed("abcde" + le16(0x0201) + "xy", 0x0201, header(0x0201));
}

TEST_F(BackupTable, largestStatusIsAnsweredWhole)
{
    std::string records;
    for (int i = 0; i < 161; ++i) {
        records += record(10, "a share name");
    }
    records += record(9, std::string(48, 'n'));
    const std::string payload = table(162, records);
    ASSERT_EQ(payload.size(), 4096U);
    expectServed(payload, 162, header(162) + records);
}

TEST_F(BackupTable, traceHasTheNumberOfBytesWritten)
{
    publish(table(1, record(1, "anna")));
    const Outcome outcome = ask([] { watch::after("echo \"cmd_gub1() ", request::loseAnswer); });
    EXPECT_EQ(outcome.answer, "");
    EXPECT_EQ(outcome.calls.back(), written(0).at(0));
}

TEST_F(BackupTable, markIsReplaced)
{
    root::writeFile(kMark, "something longer");
    expectServed(zeros(10), 0, header(0));
}

TEST_F(BackupTable, markIsWrittenBeforeTheCountsAreTraced)
{
    publish(table(1, record(1, "anna")));
    std::string mark;
    const auto look = [&] {
        watch::after("echo \"cmd_gub1 -- numberofuser", [&] { mark = root::readFile(kMark); });
    };
    EXPECT_EQ(ask(look).answer, header(1) + record(1, "anna"));
    EXPECT_EQ(mark, le32(1));
}

TEST_F(BackupTable, markThatCannotBeWrittenIsNoFailure)
{
    fs::create_directory(kMark);
    publish(table(1, record(1, "anna")));
    EXPECT_EQ(ask().answer, header(1) + record(1, "anna"));
}

TEST_F(BackupTable, collectorIsStartedIfItDoesNotRun)
{
    root::stub("ps", "echo 9 root grep pelstatus");
    root::stub("startapp", "echo \"$@\" >/stubs/started");
    const std::string payload = table(1, record(1, "anna"));
    const std::string bytes = header(1) + record(1, "anna");
    publish(payload);
    const Outcome outcome = ask();
    const Lines started = {daemonFound()[0], "startapp pelstatus",
                           trace("startPelStatus() start pelstatus return: 0 -- sys ret:Success")};
    expectReply(outcome, bytes,
                calls({statusRead(payload), served(1, payload.size()), dump(bytes), started,
                       written(bytes.size())}));
    EXPECT_EQ(root::readFile("/stubs/started"), "pelstatus\n");
}

TEST_F(BackupTable, processesThatCannotBeListedAreNoFailure)
{
    publish(table(1, record(1, "anna")));
    const Outcome outcome = ask([] { watch::answer("ps", -1, EAGAIN); });
    EXPECT_EQ(outcome.answer, header(1) + record(1, "anna"));
    EXPECT_EQ(*(outcome.calls.end() - 2),
              trace("startPelStatus() failed system(" + daemonFound()[0] +
                    ") -- syserr:Resource temporarily unavailable"));
}

// ---- gub1: no status --------------------------------------------------------------------------

TEST_F(BackupTable, withoutAStatusACollectionRunsAndItsNewlinesAreCounted)
{
    const std::string records = record(12, "anna") + record(2, "bob") + record(3, "carl");
    expectFresh(table(3, records), 3, header(3) + records);
}

TEST_F(BackupTable, countOfFreshRecordsIsTheNumberOfTheirNewlines)
{
    const std::string records = record(12, "anna") + record(0x0A0A, "bob");
    expectFresh(table(0, records), 4, header(4) + records);
    expectFresh(table(5, ""), 0, header(0));
    const std::string withoutNewline = record(12, "anna").substr(0, 16);
    expectFresh(table(1, withoutNewline), 0, header(0) + withoutNewline);
}

TEST_F(BackupTable, newlinesInAFreshHeaderCountToo)
{
    // Ten shares: the count itself is a newline.
    std::string records;
    for (const char c : std::string("abcdefghij")) {
        records += record(1, std::string(1, c));
    }
    expectFresh(table(10, records), 11, header(11) + records);
    expectFresh("\n" + zeros(9), 1, header(1));
    expectFresh(zeros(9) + "\n", 1, header(1));
}

TEST_F(BackupTable, shortFreshStatusIsFilledWithZeros)
{
    expectFresh("abcde", 0, header(0));
    expectFresh("\n\n\n\n\n", 5, header(5));
}

TEST_F(BackupTable, damagedStatusCountsAsNoStatus)
{
    const std::string payload = table(1, record(1, "anna"));
    std::string damaged = image(payload);
    damaged.back() = static_cast<char>(damaged.back() ^ 1);
    root::writeFile(root::kStatusFile, damaged);
    expectNone(ask(), statusRead(payload, sum(payload) ^ 1U));
}

TEST_F(BackupTable, statusOfAFailedCollectionCountsAsNoStatus)
{
    publish("");
    expectNone(ask(), statusRead(""));
}

TEST_F(BackupTable, unreadableStatusCountsAsNoStatus)
{
    publish(table(1, record(1, "anna")));
    fs::permissions(root::kStatusFile, fs::perms(0));
    expectNone(ask(), statusMissing("13(Permission denied)"));
}

TEST_F(BackupTable, folderInTheStatusPlaceCountsAsNoStatus)
{
    fs::create_directory(root::kStatusFile);
    EXPECT_EQ(ask().answer, header(0));
}

TEST_F(BackupTable, collectionThatPublishesNothingGivesAnEmptyTable)
{
    for (const char* script : {"exit 0", "exit 1", "exit 127"}) {
        SCOPED_TRACE(script);
        root::stub("pelstatus", script);
        expectNone(ask(), statusMissing());
    }
}

TEST_F(BackupTable, failingCollectorThatPublishesCounts)
{
    publishOnRun(table(1, record(1, "anna")), 3);
    EXPECT_EQ(ask().answer, header(1) + record(1, "anna"));
}

TEST_F(BackupTable, publishedStatusThatIsRemovedCountsAsNoStatus)
{
    publishOnRun(table(1, record(1, "anna")));
    expectNone(ask([] { watch::after("pelstatus", [] { fs::remove(root::kStatusFile); }); }),
               statusMissing());
}

TEST_F(BackupTable, collectorThatCannotRunIsTracedAndStartedForTheNextTime)
{
    const std::vector<std::pair<int, std::string>> reasons = {
        {EAGAIN, "Resource temporarily unavailable"}, {ECHILD, "No child processes"}};
    for (const auto& [error, reason] : reasons) {
        const Outcome outcome = ask([error = error] { watch::answer("pelstatus", -1, error); });
        expectReply(
            outcome, header(0),
            calls({statusMissing(),
                   daemonRun(),
                   {trace("cmd_gub1 -- failed system(" + reason + "), ret: -1"), counted(0)},
                   dump(header(0)),
                   daemonFound(),
                   noUser()}));
        EXPECT_FALSE(root::exists(kMark));
    }
}

// ---- gub1: the capacity -----------------------------------------------------------------------

TEST_F(BackupTable, capacityIsTheMirrorsIfThereAreTwoDrives)
{
    root::stub("pelparam", "echo 2");
    root::stub("mdadm", "echo '(931.51 GiB 1000.20 GB)'");
    EXPECT_EQ(ask().answer, "gubr " + le16(0) + le16(1000) + "\n");
}

TEST_F(BackupTable, unknownCapacityIsZero)
{
    root::stub("fdisk", "exit 1");
    EXPECT_EQ(ask().answer, "gubr " + zeros(4) + "\n");
}

TEST_F(BackupTable, capacityIsSixteenBitsWide)
{
    root::stub("fdisk", "echo '/dev/sda: 65534 GB'");
    EXPECT_EQ(ask().answer, "gubr " + le16(0) + le16(65534) + "\n");
    root::stub("fdisk", "echo '/dev/sda: 65546 GB'");
    EXPECT_EQ(ask().answer, "gubr " + le16(0) + le16(10) + "\n");
}

// ---- grst -------------------------------------------------------------------------------------

class DriveCheck : public request::Test {
  protected:
    const std::string countFile = root::workFile("GetTovHDDS");
    const std::string countLine = "sudo pelparam -d > " + countFile;
    const std::string removeLine = "sudo rm -f " + countFile;

    static Outcome ask(std::uint32_t count = 0)
    {
        root::writeFile(kWorkFile, "old");
        request::load(frame("grst", count));
        return request::run();
    }

    static void expectAnswer(const Outcome& outcome, std::uint32_t code, const Lines& calls)
    {
        expectError(outcome, le32(code), code, calls, request::leftBehind());
        EXPECT_FALSE(root::exists(kWorkFile));
    }

    void expectReadable(const std::string& script)
    {
        root::stub("pelparam", script);
        SCOPED_TRACE(script);
        expectAnswer(ask(), 0xD0000001, {countLine, removeLine});
    }
};

TEST_F(DriveCheck, anyNumberOfDrivesIsReadable)
{
    for (const char* script : {"echo 0", "echo 1", "echo 2", "echo 4", "echo none", "true"}) {
        expectReadable(script);
    }
}

TEST_F(DriveCheck, commandThatHasRunAndFailedIsReadable)
{
    expectReadable("exit 1");
    expectReadable("exit 127");
    expectReadable("echo -1; exit 1");
}

TEST_F(DriveCheck, parameterCountIsNotChecked)
{
    root::stub("pelparam", "echo 2");
    expectAnswer(ask(7), 0xD0000001, {countLine, removeLine});
}

TEST_F(DriveCheck, negativeNumberIsNotReadable)
{
    root::stub("pelparam", "echo -1");
    expectAnswer(ask(), 0xFF000004, {countLine, removeLine});
}

TEST_F(DriveCheck, shellThatCannotStartIsNotReadable)
{
    const std::vector<std::pair<int, std::string>> reasons = {
        {EAGAIN, "Resource temporarily unavailable"}, {ECHILD, "No child processes"}};
    for (const auto& [error, reason] : reasons) {
        root::writeFile(kWorkFile, "old");
        request::load(frame("grst", 0));
        watch::answer("sudo pelparam", -1, error);
        expectAnswer(request::run(), 0xFF000004,
                     {countLine, trace("GetTovHDDS failed system(" + countLine +
                                       "), iRet:-1, strerr: " + reason)});
    }
}

TEST_F(DriveCheck, outputThatIsGoneIsReadable)
{
    root::stub("pelparam", "echo 2");
    root::writeFile(kWorkFile, "old");
    request::load(frame("grst", 0));
    watch::after("sudo pelparam", [&] { fs::remove(countFile); });
    expectAnswer(
        request::run(), 0xD0000001,
        {countLine,
         trace("GetTovHDDS failed open file " + countFile + ", strerr: No such file or directory"),
         removeLine});
}

} // namespace
