// SPDX-License-Identifier: MIT
#include "page/script.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/mman.h>
#include <system_error>
#include <unistd.h>

#include "page/escape.h"

namespace page {
namespace {

// ---- What may stay ----------------------------------------------------------------------------

constexpr auto kOpenings = std::to_array<std::string_view>({
    "function this_page()\n{\n\treturn ",
    "function tov_hdds()\n{\n\treturn ",
});
constexpr std::string_view kClosing = ";\n}\n";

/// The size of a whole number at the start of a text.
std::size_t numberSize(std::string_view text)
{
    const std::size_t sign = text.starts_with('-') ? 1 : 0;
    const std::size_t size = std::min(text.find_first_not_of("0123456789", sign), text.size());
    return (size > sign) ? size : 0;
}

/// The size of one of the functions at the start of a text; 0 where there is none.
std::size_t functionSize(std::string_view text)
{
    for (const std::string_view opening : kOpenings) {
        if (!text.starts_with(opening)) {
            continue;
        }
        const std::size_t number = numberSize(text.substr(opening.size()));
        const std::size_t size = opening.size() + number;
        if (number > 0 && text.substr(size).starts_with(kClosing)) {
            return size + kClosing.size();
        }
    }
    return 0;
}

// ---- What becomes a comment -------------------------------------------------------------------

constexpr std::string_view kCommentStart = "//<!-- ";
constexpr std::string_view kCommentEnd = "-->";

/// A line's message, without the frame of a comment where it has one.
std::string_view messageOf(std::string_view line)
{
    if (line.starts_with(kCommentStart)) {
        line.remove_prefix(kCommentStart.size());
        if (line.ends_with(kCommentEnd)) {
            line.remove_suffix(kCommentEnd.size());
        }
    }
    return line;
}

std::string commentOf(std::string_view line)
{
    std::string comment(kCommentStart);
    comment += escape(messageOf(line));
    comment += kCommentEnd;
    comment += '\n';
    return comment;
}

} // namespace

Capture::Capture()
    : formerOutput_(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)),
      collected_(::memfd_create("page", MFD_CLOEXEC))
{
    std::fflush(stdout);
    if (formerOutput_ < 0 || collected_ < 0 || ::dup2(collected_, STDOUT_FILENO) < 0) {
        throw std::system_error(errno, std::generic_category(), "cannot collect what is printed");
    }
}

Capture::~Capture()
{
    std::fflush(stdout);
    ::dup2(formerOutput_, STDOUT_FILENO);
    ::close(formerOutput_);
    ::close(collected_);
}

std::string Capture::printed()
{
    std::fflush(stdout);
    std::string text;
    std::array<char, 4096> piece{};
    ssize_t size = 0;
    while ((size = ::pread(collected_, piece.data(), piece.size(),
                           static_cast<off_t>(text.size()))) > 0) {
        text.append(piece.data(), static_cast<std::size_t>(size));
    }
    return text;
}

void Script::add(std::string_view printed)
{
    while (!printed.empty()) {
        const std::size_t function = functionSize(printed);
        if (function > 0) {
            text_ += printed.substr(0, function);
            printed.remove_prefix(function);
            continue;
        }
        const std::size_t end = std::min(printed.find('\n'), printed.size());
        text_ += commentOf(printed.substr(0, end));
        printed.remove_prefix(std::min(end + 1, printed.size()));
    }
}

} // namespace page
