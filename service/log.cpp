// SPDX-License-Identifier: MIT
#include "service/log.h"

#include <algorithm>
#include <unistd.h>

#include "cmdsvc/protocol.h"
#include "core/bytes.h"

namespace service {
namespace {

bool isPlain(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

std::string showCode(std::string_view code)
{
    if (code.size() == cmdsvc::kCodeSize && std::ranges::all_of(code, isPlain)) {
        return std::string(code);
    }
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string shown = "0x";
    for (const char c : code) {
        const auto byte = static_cast<unsigned char>(c);
        shown += {kDigits[byte >> 4U], kDigits[byte & 0x0FU]};
    }
    return shown;
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
    return std::to_string(number) + " " + showCode(request.substr(0, cmdsvc::kCodeSize)) +
           " count=" + std::to_string(core::u32At(request, cmdsvc::kCountOffset)) +
           " answer=" + std::to_string(outcome.answer.size()) +
           " ms=" + std::to_string(taken.count()) + std::string(showEnding(outcome.ending));
}

void log(const std::string& line)
{
    const std::string whole = "vokserve: " + line + "\n";
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, whole.data(), whole.size());
}

} // namespace service
