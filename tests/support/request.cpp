// SPDX-License-Identifier: MIT
#include "tests/support/request.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <iterator>

#include "cmdsvc/channel.h"
#include "core/core.h"
#include "tests/support/root.h"

namespace request {
namespace {

std::string hex(const char* format, std::uint32_t value)
{
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), format, value);
    return text.data();
}

} // namespace

std::string frame(std::string_view code, std::uint32_t count, std::string_view rest)
{
    return std::string(code) + " " + root::le32(count) + "\n" + std::string(rest);
}

void load(std::string_view frame)
{
    watch::restart();
    std::ranges::fill(fin_buf, '\0');
    frame.copy(std::data(fin_buf), std::size(fin_buf));
}

Outcome run(int number)
{
    const int result = process_command(number);
    if (fout_buf != nullptr) {
        std::fflush(fout_buf);
    }
    const std::string path = "/tmp/outbuf" + std::to_string(number);
    EXPECT_TRUE(root::exists(path)) << "an answer of nothing is an empty file";
    return {result, root::readFile(path), watch::calls()};
}

Outcome process(std::string_view frame, int number)
{
    load(frame);
    return run(number);
}

void loseAnswer()
{
    ASSERT_NE(std::freopen("/dev/full", "w", fout_buf), nullptr);
    std::setvbuf(fout_buf, nullptr, _IONBF, 0);
}

std::string unread()
{
    std::array<char, sizeof fin_buf> bytes;
    const std::size_t size = std::fread(bytes.data(), 1, bytes.size(), cmdsvc::requestStream());
    const std::string_view rest(bytes.data(), size);
    return std::string(rest.substr(0, rest.find_last_not_of('\0') + 1));
}

std::vector<std::string> opening(std::string_view code, std::uint32_t count)
{
    std::uint32_t word = 0;
    for (std::size_t i = 4; i > 0; --i) {
        word = (word << 8U) | static_cast<unsigned char>(code[i - 1]);
    }
    return {root::trace(hex("cmd=%x ", word)), root::trace(hex("param_count=%x", count))};
}

std::vector<std::string> opening(std::string_view code, std::uint32_t count,
                                 const std::vector<std::string>& more)
{
    std::vector<std::string> calls = opening(code, count);
    calls.insert(calls.end(), more.begin(), more.end());
    return calls;
}

std::string exitTrace(std::uint32_t code)
{
    return root::trace(hex("exiting with error %#.8x", code));
}

} // namespace request
