// SPDX-License-Identifier: MIT
#include "core/core.h"

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <string_view>

namespace {

using core::kMessageSize;

constexpr std::size_t kEchoSize = 2048;
constexpr std::string_view kLongestEchoFrame = "echo \"\" >> /tmp/dbg_vokcontrol.txt";

// The longest message still fits on its shell line: the closing quote and the redirection are never
// cut.
static_assert(kMessageSize + kLongestEchoFrame.size() <= kEchoSize);

unsigned char firstTrace = 1;
std::array<char, kMessageSize> message;
std::array<char, kEchoSize> echoLine;

} // namespace

int dbg_trace(const char* format, ...)
{
    const int callersError = errno;

    std::va_list arguments;
    va_start(arguments, format);
    core::vformatBounded(message, format, arguments);
    va_end(arguments);

    const char* redirection = (firstTrace != 0) ? ">" : ">>";
    core::formatBounded(echoLine, "echo \"%s\" %s /tmp/dbg_vokcontrol.txt", message.data(),
                        redirection);
    firstTrace = 0;
    const core::ShellRun run = core::runShellLine(echoLine.data());

    errno = callersError;
    return run.result;
}
