// SPDX-License-Identifier: MIT
#include "service/log.h"

#include <algorithm>
#include <array>
#include <unistd.h>

#include "core/bytes.h"

namespace service {
namespace {

constexpr std::size_t kCodeSize = 4;
constexpr std::size_t kCountOffset = 5;
constexpr std::size_t kCountSize = 4;

bool isPlain(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

std::string showCode(std::string_view code)
{
    if (code.size() == kCodeSize && std::ranges::all_of(code, isPlain)) {
        return std::string(code);
    }
    std::string shown = "0x";
    core::appendHex(shown, code);
    return shown;
}

std::uint32_t countOf(std::string_view request)
{
    std::uint32_t count = 0;
    for (std::size_t i = 0; i < kCountSize && kCountOffset + i < request.size(); ++i) {
        count |= static_cast<std::uint32_t>(static_cast<unsigned char>(request[kCountOffset + i]))
                 << (8U * i);
    }
    return count;
}

std::string_view showEnding(Ending ending)
{
    switch (ending) {
    case Ending::kFinished:
        return "";
    case Ending::kFailed:
        return " (its process failed)";
    case Ending::kTimedOut:
        return " (took too long and was ended)";
    case Ending::kNotStarted:
        return " (could not be started)";
    case Ending::kRefused:
        return " (refused)";
    }
    return "";
}

} // namespace

std::string describe(int number, std::string_view request, const Outcome& outcome,
                     std::chrono::milliseconds taken)
{
    return std::to_string(number) + " " + showCode(request.substr(0, kCodeSize)) +
           " count=" + std::to_string(countOf(request)) +
           " answer=" + std::to_string(outcome.answer.size()) +
           " ms=" + std::to_string(taken.count()) + std::string(showEnding(outcome.ending));
}

void log(const std::string& line)
{
    const std::string whole = "vokserve: " + line + "\n";
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, whole.data(), whole.size());
}

} // namespace service
