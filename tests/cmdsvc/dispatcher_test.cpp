// SPDX-License-Identifier: MIT
//
// process_command: every row of the command table, and frames of every kind.
#include <array>
#include <filesystem>
#include <gtest/gtest.h>
#include <random>

#include "core/core.h"
#include "tests/support/request.h"

namespace {

using request::exitTrace;
using request::frame;
using request::kWorkFile;
using request::Lines;
using request::lineTraces;
using request::opening;
using request::Outcome;
using request::process;
using root::le32;
using root::trace;

class Dispatcher : public request::Test {};

// ---- Rows -------------------------------------------------------------------------------------

/// The protocol page's row of a command.
struct Row {
    std::string code;
    std::vector<unsigned> counts; ///< empty: any count
    std::uint32_t wrongCountCode;
    char exit; ///< as the page names it; ' ' if no count is wrong
};

const std::vector<Row> kRows = {
    {"crat", {2}, 0xFF000003, 'A'}, {"dscr", {}, 0, ' '},
    {"frst", {0}, 0xFF000003, 'A'}, {"getv", {1}, 0xFF000003, 'B'},
    {"gps1", {0}, 0xC1000001, 'A'}, {"gpsn", {}, 0, ' '},
    {"gpvt", {0}, 0xFF000003, 'A'}, {"grst", {}, 0, ' '},
    {"gsp1", {1}, 0xC1000001, 'A'}, {"gspc", {}, 0, ' '},
    {"gub1", {0}, 0xFF000003, 'A'}, {"gubs", {}, 0, ' '},
    {"host", {4}, 0xFF000003, 'A'}, {"ipcf", {}, 0, ' '},
    {"lsts", {0}, 0xFF000003, 'A'}, {"lstu", {0}, 0xFF000003, 'A'},
    {"pshr", {3}, 0xFF000003, 'A'}, {"qlps", {0}, 0xFF000003, 'A'},
    {"rtov", {2}, 0xFF000003, 'A'}, {"sgss", {0}, 0xC1000001, 'A'},
    {"shar", {3}, 0xFF000003, 'C'}, {"spvt", {2}, 0xFF000003, 'S'},
    {"sub1", {2}, 0xFF000003, 'A'}, {"subs", {}, 0, ' '},
    {"vers", {0}, 0xFF000003, 'A'}, {"wags", {1, 2}, 0xFF000003, 'B'},
    {"wall", {2}, 0xFF000003, 'B'}, {"warp", {3}, 0xFF000003, 'B'},
    {"wasu", {4}, 0xFF000003, 'B'},
};

bool isWrong(const Row& row, std::uint32_t count)
{
    const unsigned low = count & 0xFFU;
    return !row.counts.empty() &&
           std::find(row.counts.begin(), row.counts.end(), low) == row.counts.end();
}

Lines wrongCountCalls(const Row& row, std::uint32_t count)
{
    Lines calls = opening(row.code, count);
    if (row.exit == 'C') {
        calls = root::join({calls, lineTraces(frame(row.code, count))});
    }
    if (row.exit == 'S') {
        const std::string low = std::to_string(count & 0xFFU);
        calls.push_back(trace("_spvt: " + low + " -- " + low));
    }
    calls.push_back(exitTrace(row.wrongCountCode));
    return calls;
}

constexpr int kNewNumber = 8;

/// The path of an answer that no earlier request has left.
std::string newAnswerPath()
{
    const std::string path = "/tmp/outbuf" + std::to_string(kNewNumber);
    std::filesystem::remove(path);
    return path;
}

/// Expects that the answer is open: WRITTEN bytes are in its stream, and its file is empty.
void expectOpenAndEmpty(const std::string& path, long written)
{
    ASSERT_NE(fout_buf, nullptr) << path;
    EXPECT_EQ(std::ftell(fout_buf), written);
    EXPECT_TRUE(std::filesystem::is_regular_file(path));
    EXPECT_EQ(root::readFile(path), "");
}

TEST_F(Dispatcher, wrongCountIsAnsweredAsEachRowSays)
{
    for (const Row& row : kRows) {
        for (const std::uint32_t count : {0U, 1U, 2U, 3U, 4U, 5U, 255U, 0x101U, 0x104U}) {
            if (!isWrong(row, count)) {
                continue;
            }
            root::writeFile(kWorkFile, "");
            const Outcome outcome = process(frame(row.code, count));
            EXPECT_EQ(outcome.result, row.exit == 'B' ? -1 : 0) << row.code << count;
            EXPECT_EQ(outcome.answer, le32(row.wrongCountCode)) << row.code << count;
            EXPECT_EQ(outcome.calls, wrongCountCalls(row, count)) << row.code << count;
            EXPECT_EQ(root::exists(kWorkFile), row.exit == 'B') << row.code << count;
        }
    }
}

TEST_F(Dispatcher, wrongCountLeavesTheAnswerOpenAndUnwritten)
{
    for (const Row& row : kRows) {
        if (row.exit == ' ') {
            continue;
        }
        const std::string path = newAnswerPath();
        request::load(frame(row.code, 99));
        process_command(kNewNumber);
        expectOpenAndEmpty(path, 4);
        EXPECT_EQ(process(frame("gubs", 0)).result, 0);
        EXPECT_EQ(root::readFile(path), le32(row.wrongCountCode)) << row.code;
    }
}

TEST_F(Dispatcher, rightCountRunsTheCommand)
{
    root::stub("ps", "echo pelstatus");
    root::stub("php", ": >\"$3\"");
    root::stub("pelparam", "echo 1");
    for (const Row& row : kRows) {
        const std::vector<unsigned> any = {0, 1, 10, 255};
        for (const unsigned count : row.counts.empty() ? any : row.counts) {
            const Outcome outcome = process(frame(row.code, count, "guest\nBooks\nx\nen\n"));
            EXPECT_EQ(outcome.result, 0) << row.code << count;
            if (row.exit != ' ') {
                EXPECT_NE(outcome.calls, wrongCountCalls(row, count)) << row.code << count;
            }
        }
    }
}

TEST_F(Dispatcher, wrongCountReturnsTheResultOfItsLastTrace)
{
    for (const Row& row : kRows) {
        if (row.exit == ' ') {
            continue;
        }
        request::load(frame(row.code, 99));
        watch::answer("echo \"exiting", 0x300, 0);
        EXPECT_EQ(request::run().result, row.exit == 'B' ? -1 : 0x300) << row.code;
    }
}

TEST_F(Dispatcher, onlyTheLowByteOfACountIsChecked)
{
    const Outcome outcome = process(frame("rtov", 0xABCDEF02));
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.answer, "");
    EXPECT_EQ(outcome.calls, opening("rtov", 0xABCDEF02));
    root::stub("php", ": >\"$3\"");
    EXPECT_EQ(process(frame("lstu", 256)).answer, "lsut " + le32(0) + "\n");
}

TEST_F(Dispatcher, commandsThatAreIgnoredAnswerNothing)
{
    for (const std::uint32_t count : {0U, 1U, 2U, 255U}) {
        const Outcome ignored = process(frame("gubs", count));
        EXPECT_EQ(ignored.result, 0);
        EXPECT_EQ(ignored.answer, "");
        EXPECT_EQ(ignored.calls, opening("gubs", count));
        for (const char* code : {"dscr", "ipcf"}) {
            const Outcome traced = process(frame(code, count));
            EXPECT_EQ(traced.result, 0);
            EXPECT_EQ(traced.answer, "");
            EXPECT_EQ(traced.calls,
                      opening(code, count, {trace("received UDP targeted command!!! 0")}));
        }
    }
    EXPECT_EQ(process(frame("rtov", 2)).answer, "");
}

TEST_F(Dispatcher, answeredCommandsCloseTheirAnswer)
{
    for (const char* code : {"gubs", "dscr", "ipcf"}) {
        EXPECT_EQ(process(frame(code, 0)).result, 0);
        EXPECT_EQ(fout_buf, nullptr) << code;
    }
    EXPECT_EQ(process(frame("rtov", 0)).answer, le32(0xFF000003));
    EXPECT_NE(fout_buf, nullptr) << "a wrong count leaves it open";
}

TEST_F(Dispatcher, unknownCodesAnswerNothing)
{
    for (const char* code : {"xxxx", "Lstu", "lstU", "cpbu", "    ", "lst", "\xFF\xFF\xFF\xFF"}) {
        const std::string four = (std::string(code) + std::string(4, '\0')).substr(0, 4);
        const Outcome outcome = process(frame(four, 0));
        EXPECT_EQ(outcome.result, -1) << code;
        EXPECT_EQ(outcome.answer, "") << code;
        EXPECT_EQ(outcome.calls, opening(four, 0, {trace("received invalid command!!! 0")}))
            << code;
    }
}

TEST_F(Dispatcher, unknownCodeLeavesTheAnswerOpenAndEmpty)
{
    const std::string path = newAnswerPath();
    request::load(frame("xxxx", 0));
    EXPECT_EQ(process_command(kNewNumber), -1);
    expectOpenAndEmpty(path, 0);
}

TEST_F(Dispatcher, ignoredCommandLeavesAnEmptyAnswer)
{
    for (const std::string& request :
         {frame("gubs", 0), frame("dscr", 0), frame("ipcf", 0), frame("rtov", 2)}) {
        const std::string path = newAnswerPath();
        request::load(request);
        EXPECT_EQ(process_command(kNewNumber), 0) << request;
        EXPECT_TRUE(std::filesystem::is_regular_file(path)) << request;
        EXPECT_EQ(root::readFile(path), "") << request;
    }
}

TEST_F(Dispatcher, separatorIsNotChecked)
{
    EXPECT_EQ(process("gubs#" + le32(0) + "\n").result, 0);
    EXPECT_EQ(process(std::string("gubs\0", 5) + le32(0) + "\n").result, 0);
}

TEST_F(Dispatcher, lineIsTracedByteByByteBeforeItsCountIsChecked)
{
    EXPECT_EQ(
        process(frame("shar", 5, "name\nproperty\n")).calls,
        opening("shar", 5, root::join({lineTraces(frame("shar", 5)), {exitTrace(0xFF000003)}})));

    // A line of more than 30 bytes shows its first 30, signed or not.
    const std::string line = "shar " + le32(5) + std::string(40, '\xE9') + "\n";
    EXPECT_EQ(process(line).calls,
              opening("shar", 5, root::join({lineTraces(line), {exitTrace(0xFF000003)}})));
}

// ---- Frames -----------------------------------------------------------------------------------

TEST_F(Dispatcher, newlineEndsTheLineInEveryPlace)
{
    // A count of ten ends the line within the count.
    const Outcome outcome = process("rtov " + le32(10));
    EXPECT_EQ(outcome.answer, le32(0xFF000003));
    EXPECT_EQ(outcome.calls, opening("rtov", 10, {exitTrace(0xFF000003)}));
    EXPECT_EQ(process("\nrtov" + le32(2)).result, -1);
}

TEST_F(Dispatcher, shortLineShowsNothingOfThePreviousOne)
{
    EXPECT_EQ(process(frame("gubs", 0x05040302)).result, 0);
    const Outcome outcome = process("rtov\n");
    EXPECT_EQ(outcome.answer, le32(0xFF000003));
    EXPECT_EQ(outcome.calls, opening("rtov", 0, {exitTrace(0xFF000003)}));
    EXPECT_EQ(process("gub\n").result, -1);
}

TEST_F(Dispatcher, restOfTheRequestStaysInItsStream)
{
    EXPECT_EQ(process(frame("gubs", 0, "one\ntwo")).result, 0);
    EXPECT_EQ(request::unread(), "one\ntwo");
}

TEST_F(Dispatcher, lineWithoutANewlineIsReadUpToFourThousandNinetyFourBytes)
{
    const std::string request = "gubs " + le32(1) + std::string(4085, 'x') + "yz";
    ASSERT_EQ(request.size(), 4096U);
    EXPECT_EQ(process(request).result, 0);
    EXPECT_EQ(request::unread(), "yz");
}

TEST_F(Dispatcher, framesOfEveryLengthAreSafe)
{
    // Traces are not run here: four thousand shells would take long and show nothing more.
    for (const char fill : {'\0', '\xFF', 'g', '\n'}) {
        for (std::size_t size = 0; size <= 4096; size += (size < 64 || size > 4080) ? 1 : 97) {
            request::load(std::string(size, fill));
            for (int i = 0; i < 3; ++i) {
                watch::answer("echo", 0, 0);
            }
            EXPECT_EQ(request::run().result, -1) << size;
        }
    }
}

TEST_F(Dispatcher, randomFramesAreSafe)
{
    std::mt19937 random(20261121);
    for (int round = 0; round < 300; ++round) {
        const Row& row = kRows[random() % kRows.size()];
        std::string request = row.code + " ";
        const std::size_t size = random() % 60;
        for (std::size_t i = 0; i < size; ++i) {
            request += static_cast<char>(random() % 256);
        }
        request::load(request);
        for (int i = 0; i < 60; ++i) {
            watch::answer("", 0, 0);
        }
        const Outcome outcome = request::run();
        EXPECT_TRUE(outcome.result == 0 || outcome.result == -1);
    }
    EXPECT_EQ(process(frame("gubs", 0)).result, 0);
}

// ---- Streams ----------------------------------------------------------------------------------

TEST_F(Dispatcher, answersAreNamedByTheRequestsNumber)
{
    for (const int number : {0, 1, 2147483647, -1}) {
        EXPECT_EQ(process(frame("rtov", 0), number).answer, le32(0xFF000003));
    }
    EXPECT_TRUE(root::exists("/tmp/outbuf-1"));
    EXPECT_TRUE(root::exists("/tmp/outbuf2147483647"));
}

TEST_F(Dispatcher, olderAnswerIsReplaced)
{
    root::writeFile("/tmp/outbuf7", std::string(100, 'x'));
    EXPECT_EQ(process(frame("gubs", 0)).answer, "");
}

TEST_F(Dispatcher, answerThatCannotBeOpenedIsTraced)
{
    std::filesystem::create_directory("/tmp/outbuf7");
    const Outcome outcome = process(frame("sgss", 0));
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.calls,
              Lines{trace("************FAILED redirect fin_buf and fout_buf *****************")});
    std::filesystem::remove("/tmp/outbuf7");
    EXPECT_EQ(process(frame("gubs", 0)).result, 0) << "the next request is served";
}

TEST_F(Dispatcher, streamThatAnExitLeftOpenIsReleasedByTheNextRequest)
{
    request::load(frame("rtov", 0));
    const auto openFiles = [] { return root::list("/proc/self/fd").size(); };
    process_command(1);
    const std::size_t before = openFiles();
    for (int number = 2; number < 50; ++number) {
        process_command(number);
        EXPECT_EQ(root::readFile("/tmp/outbuf" + std::to_string(number - 1)), le32(0xFF000003));
    }
    EXPECT_EQ(openFiles(), before);
}

TEST_F(Dispatcher, fullDiskLeavesAnEmptyAnswerAndTheNextRequestIsServed)
{
    root::fillDisk("/tmp");
    EXPECT_EQ(process(frame("rtov", 0)).answer, "");
    std::filesystem::remove("/tmp/filler");
    EXPECT_EQ(process(frame("rtov", 0)).answer, le32(0xFF000003));
}

} // namespace
