// SPDX-License-Identifier: MIT
#include "guard/trace.h"

#include <array>
#include <cstddef>
#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

namespace guard {
namespace {

constexpr const char* kTraceFile = "/tmp/dbg_vokcontrol.txt";
constexpr std::string_view kOpening = "echo \"";
constexpr std::string_view kFirstClosing = "\" > /tmp/dbg_vokcontrol.txt";
constexpr std::string_view kClosing = "\" >> /tmp/dbg_vokcontrol.txt";

constexpr int kCannotOpen = 2 << 8;
constexpr int kCannotWrite = 1 << 8;

/// The text before the end of a trace line; nothing if the line ends in another way.
std::optional<std::string_view> textBefore(std::string_view line, std::string_view closing)
{
    if (line.size() < kOpening.size() + closing.size() || !line.ends_with(closing)) {
        return std::nullopt;
    }
    line.remove_prefix(kOpening.size());
    line.remove_suffix(closing.size());
    return line;
}

bool writeLine(int file, std::string_view text)
{
    char newline = '\n';
    const auto pieces =
        std::to_array<iovec>({{const_cast<char*>(text.data()), text.size()}, {&newline, 1}});
    return ::writev(file, pieces.data(), pieces.size()) == static_cast<ssize_t>(text.size() + 1);
}

} // namespace

std::optional<Trace> readTrace(std::string_view line)
{
    if (!line.starts_with(kOpening)) {
        return std::nullopt;
    }
    if (const auto text = textBefore(line, kFirstClosing)) {
        return Trace{*text, true};
    }
    if (const auto text = textBefore(line, kClosing)) {
        return Trace{*text, false};
    }
    return std::nullopt;
}

int writeTrace(const Trace& trace)
{
    constexpr mode_t kMode = 0666;
    const int mode = trace.isFirst ? O_TRUNC : O_APPEND;
    const int file = ::open(kTraceFile, O_WRONLY | O_CREAT | O_CLOEXEC | mode, kMode);
    if (file < 0) {
        return kCannotOpen;
    }
    const bool isWritten = writeLine(file, trace.text);
    ::close(file);
    return isWritten ? 0 : kCannotWrite;
}

} // namespace guard
