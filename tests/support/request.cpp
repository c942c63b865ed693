// SPDX-License-Identifier: MIT
#include "tests/support/request.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <iterator>
#include <utility>

#include "core/core.h"
#include "handlers/remote_access.h"

namespace request {
namespace {

/// The frame in fin_buf, without the zeros after it.
std::string loaded;

std::string hex(const char* format, std::uint32_t value)
{
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), format, value);
    return text.data();
}

/// The 32-bit number at an offset of a line; bytes after the line's end count as zero.
std::uint32_t wordAt(const std::string& line, std::size_t place)
{
    std::uint32_t word = 0;
    for (std::size_t i = place + 4; i > place; --i) {
        word = (word << 8U) | ((i <= line.size()) ? static_cast<unsigned char>(line[i - 1]) : 0U);
    }
    return word;
}

/// Reads the next piece of the request as "wags" does: a line, or 255 bytes of one.
/// @return false if nothing is left
bool readPiece(std::string& piece)
{
    watch::restart();
    // No test reads these traces, so no shell needs to run.
    watch::answer("echo", 0, 0);
    watch::answer("echo", 0, 0);
    const std::string traced = call(cmd_wags).calls.at(0);
    const std::string start = "echo \"wags entity: ";
    if (!traced.starts_with(start)) {
        return false;
    }
    piece = traced.substr(start.size(), traced.rfind('"') - start.size());
    return true;
}

} // namespace

const std::vector<Failure> kFailures = {
    {"exit 1", 0x100, 0, "Success"},
    {"exit 127", 0x7F00, 0, "Success"},
    {"exit 255", 0xFF00, 0, "Success"},
    {"", -1, EAGAIN, root::kAgain},
    {"", -1, ECHILD, root::kNoChild},
    {"", -1, 0, "Success"},
    {"", 9, 0, "Success"},
};

std::string frame(std::string_view code, std::uint32_t count, std::string_view rest)
{
    return std::string(code) + " " + root::le32(count) + "\n" + std::string(rest);
}

std::string filledFrame(std::string_view code, std::uint32_t count, std::string_view rest)
{
    const std::string start = std::string(code) + " " + root::le32(count);
    return start + std::string(sizeof fin_buf - start.size() - 1 - rest.size(), 'x') + "\n" +
           std::string(rest);
}

void load(std::string_view frame)
{
    watch::restart();
    std::ranges::fill(fin_buf, '\0');
    frame.copy(std::data(fin_buf), std::size(fin_buf));
    loaded = frame;
}

Outcome run(int number)
{
    int result = 0;
    const std::string printed = root::printed([&] { result = process_command(number); });
    if (fout_buf != nullptr) {
        std::fflush(fout_buf);
    }
    const std::string path = "/tmp/outbuf" + std::to_string(number);
    EXPECT_TRUE(root::exists(path)) << "an answer of nothing is an empty file";
    return {result, root::readFile(path), watch::calls(), printed};
}

Outcome process(std::string_view frame, int number)
{
    load(frame);
    return run(number);
}

Outcome call(void (*handler)())
{
    const std::string path = "/stubs/answer";
    FILE* const before = std::exchange(fout_buf, std::fopen(path.c_str(), "w"));
    const std::string printed = root::printed(handler);
    std::fclose(std::exchange(fout_buf, before));
    return {0, root::readFile(path), watch::calls(), printed};
}

void loseAnswer()
{
    ASSERT_NE(std::freopen("/dev/full", "w", fout_buf), nullptr);
    std::setvbuf(fout_buf, nullptr, _IONBF, 0);
}

std::string unread()
{
    constexpr std::size_t kLongestPiece = 255;
    std::string all;
    for (std::string piece; readPiece(piece);) {
        all += (piece.size() < kLongestPiece) ? piece + "\n" : piece;
    }
    watch::restart();
    return all.substr(0, all.find_last_not_of('\n') + 1);
}

Lines opening(std::string_view code, std::uint32_t count, const Lines& more)
{
    return root::join({{root::trace(hex("cmd=%x ", wordAt(std::string(code), 0))),
                        root::trace(hex("param_count=%x", count))},
                       more});
}

Lines openingOf(std::string_view frame, const Lines& more)
{
    std::string line(frame.substr(0, frame.find('\n')));
    line += (line.size() < frame.size()) ? "\n" : "";
    return opening(line, wordAt(line, 5), more);
}

Lines lineTraces(std::string_view line)
{
    Lines traces;
    for (std::size_t i = 0; i < 30; ++i) {
        const char c = (i < line.size()) ? line[i] : '\0';
        std::array<char, 16> text{};
        std::snprintf(text.data(), text.size(), "0x%02X,%c", static_cast<unsigned char>(c), c);
        traces.push_back(root::trace(text.data()));
    }
    return traces;
}

std::string exitTrace(std::uint32_t code)
{
    return root::trace(hex("exiting with error %#.8x", code));
}

Lines leftBehind()
{
    Lines paths;
    for (const std::string folder : {"/tmp/work", "/tmp"}) {
        for (const std::string& name : root::exists(folder) ? root::list(folder) : Lines{}) {
            paths.push_back(folder + "/" + name);
        }
    }
    std::erase_if(paths, [](const std::string& path) {
        return path == "/tmp/work" || path == root::kTraceFile || path == "/tmp/outbuf7";
    });
    std::ranges::sort(paths);
    return paths;
}

void Test::expectEnd(const Outcome& outcome, const std::string& answer, const Lines& calls,
                     Lines left, const std::string& printed)
{
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.answer, answer);
    EXPECT_EQ(outcome.calls, openingOf(loaded, calls));
    EXPECT_EQ(outcome.printed, printed);
    std::ranges::sort(left);
    EXPECT_EQ(leftBehind(), left);
    EXPECT_EQ(fout_buf, nullptr) << "the answer is closed";
    EXPECT_EQ(root::openFiles(), Lines{}) << "no file stays open";
}

void Test::expectEnd(const std::string& answer, const Lines& calls, const Lines& left,
                     const std::string& printed)
{
    expectEnd(run(), answer, calls, left, printed);
}

void Test::expectReply(const Outcome& outcome, const std::string& answer, const Lines& calls)
{
    expectEnd(outcome, answer, calls, leftBehind(), outcome.printed);
}

void Test::expectError(const Outcome& outcome, const std::string& answer, std::uint32_t code,
                       const Lines& calls, const Lines& left, const std::string& printed)
{
    expectEnd(outcome, answer, root::join({calls, {exitTrace(code)}}), left, printed);
}

} // namespace request
