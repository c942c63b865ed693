// SPDX-License-Identifier: MIT
#include "client/reasons.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <poll.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>
#include <vector>

#include "view/terminal_text.h"
#include "view/utf8.h"

namespace client {
namespace {

/// Whether there are bytes or the connection's end. An error is reported only once, and is left to
/// whoever reads on: otherwise an answer that was cut off would look like an empty one.
bool isReadable(int socket, std::chrono::milliseconds patience)
{
    constexpr std::int64_t kLongest = std::numeric_limits<int>::max();
    const auto most = static_cast<int>(std::min<std::int64_t>(patience.count(), kLongest));
    pollfd connection = {socket, POLLIN, 0};
    return ::poll(&connection, 1, most) == 1 && (connection.revents & POLLERR) == 0;
}

/// The descriptors that came with a message. The service sends one; each has to be closed.
std::vector<int> descriptorsIn(msghdr& message)
{
    const cmsghdr* header = CMSG_FIRSTHDR(&message);
    if (header == nullptr || header->cmsg_level != SOL_SOCKET || header->cmsg_type != SCM_RIGHTS) {
        return {};
    }
    std::vector<int> descriptors((header->cmsg_len - CMSG_LEN(0)) / sizeof(int));
    std::memcpy(descriptors.data(), CMSG_DATA(header), descriptors.size() * sizeof(int));
    return descriptors;
}

/// The text in a file from the service, up to the zeros that fill it. Only a file in memory can be
/// sealed; from any other a server could make the client wait.
std::string readReasons(int descriptor)
{
    constexpr int kNotOfMemory = -1;
    constexpr std::size_t kMost = 4096;
    if (::fcntl(descriptor, F_GET_SEALS) == kNotOfMemory) {
        return "";
    }
    std::string text(kMost, '\0');
    const ssize_t size = ::pread(descriptor, text.data(), text.size(), 0);
    text.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    return text.substr(0, text.find('\0'));
}

/// The start of a text with at most so many bytes, but no part of a character.
std::string_view startOf(std::string_view text, std::size_t most)
{
    std::size_t size = 0;
    while (size < text.size()) {
        const auto character = view::firstCharacter(text.substr(size));
        const std::size_t next = size + (character ? character->size : 1);
        if (next > most) {
            break;
        }
        size = next;
    }
    return text.substr(0, size);
}

std::string shortLine(std::string_view line)
{
    constexpr std::size_t kMost = 200;
    const std::string_view start = startOf(line, kMost);
    return view::makePrintable(start).text + (start.size() < line.size() ? "..." : "");
}

} // namespace

FirstPiece receiveFirst(int socket, std::size_t longest, std::chrono::milliseconds patience)
{
    if (!isReadable(socket, patience)) {
        return {};
    }
    constexpr std::size_t kMost = 16384;
    constexpr std::size_t kMostDescriptors = 253; // The kernel passes no more with a message.
    std::string bytes(std::min(longest, kMost), '\0');
    alignas(cmsghdr) std::array<char, CMSG_SPACE(kMostDescriptors * sizeof(int))> control = {};
    iovec place = {bytes.data(), bytes.size()};
    msghdr message = {};
    message.msg_iov = &place;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    const ssize_t size = ::recvmsg(socket, &message, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
    bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    FirstPiece piece = {std::move(bytes), ""};
    if (size > 0) {
        const std::vector<int> descriptors = descriptorsIn(message);
        piece.reasons = descriptors.empty() ? "" : readReasons(descriptors.front());
        std::ranges::for_each(descriptors, ::close);
    }
    return piece;
}

std::vector<std::string> reasonLines(std::string_view reasons)
{
    constexpr std::size_t kMost = 5;
    std::vector<std::string> lines;
    while (!reasons.empty() && lines.size() < kMost) {
        const std::string_view line = reasons.substr(0, reasons.find('\n'));
        if (!line.empty()) {
            lines.push_back(shortLine(line));
        }
        reasons.remove_prefix(std::min(line.size() + 1, reasons.size()));
    }
    return lines;
}

} // namespace client
