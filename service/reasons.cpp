// SPDX-License-Identifier: MIT
#include "service/reasons.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "cmdsvc/protocol.h"
#include "cmdsvc/request_reader.h"
#include "core/bytes.h"

namespace service {
namespace {

/// What a file holds: as far as it has been written, since all writers share one position.
std::string contentOf(int descriptor)
{
    const off_t end = ::lseek(descriptor, 0, SEEK_CUR);
    std::string content(static_cast<std::size_t>(std::clamp<off_t>(end, 0, Reasons::kSize)), '\0');
    const ssize_t size = ::pread(descriptor, content.data(), content.size(), 0);
    content.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    return content;
}

/// A file in memory of a fixed size; -1 if memory or descriptors are missing.
int makeFile(std::size_t size)
{
    const int file = ::memfd_create("reasons", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    if (file >= 0 && (::ftruncate(file, static_cast<off_t>(size)) != 0 ||
                      ::fcntl(file, F_ADD_SEALS, F_SEAL_GROW | F_SEAL_SHRINK) != 0)) {
        ::close(file);
        return -1;
    }
    return file;
}

bool isPlain(char c)
{
    return c >= ' ' && c <= '~' && c != '\\';
}

std::string_view withoutLastNewlines(std::string_view text)
{
    return text.substr(0, text.find_last_not_of('\n') + 1);
}

// ---- Parameters in what was written ------------------------------------------------------------

using Parameters = std::vector<std::string_view>;

bool isAlphanumeric(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

/// Of one or two letters, every word would have some.
void add(std::string_view text, Parameters& parameters)
{
    constexpr std::size_t kShortest = 3;
    if (text.size() >= kShortest) {
        parameters.push_back(text);
    }
}

/// Programs escape other characters in ways of their own, but letters and digits stay.
void addWords(std::string_view text, Parameters& parameters)
{
    while (!text.empty()) {
        const auto end = std::ranges::find_if_not(text, isAlphanumeric);
        const auto size = static_cast<std::size_t>(end - text.begin());
        add(text.substr(0, size), parameters);
        text.remove_prefix(std::min(size + 1, text.size()));
    }
}

/// What the request's parameters hold, as programs get it: up to a zero byte.
Parameters parametersOf(std::string_view request)
{
    Parameters parameters;
    std::string_view lines = request.substr(std::min(cmdsvc::kParametersOffset, request.size()));
    while (!lines.empty()) {
        const std::string_view line = lines.substr(0, lines.find('\n'));
        add(cmdsvc::textOf(line), parameters);
        addWords(line, parameters);
        lines.remove_prefix(std::min(line.size() + 1, lines.size()));
    }
    return parameters;
}

/// How much of a text's start belongs to a parameter. Programs cut long values: in a stack trace
/// there is only the start of a password.
std::size_t partAt(std::string_view text, std::string_view parameter)
{
    constexpr std::size_t kTelling = 6;
    const std::string_view most = parameter.substr(0, text.size());
    const auto end = std::mismatch(most.begin(), most.end(), text.begin()).first;
    const auto size = static_cast<std::size_t>(end - most.begin());
    return (size == parameter.size() || size >= kTelling) ? size : 0;
}

/// The longest of these parts; 0 if there is none. A name may be the start of a password.
std::size_t parameterAt(std::string_view text, const Parameters& parameters)
{
    std::size_t longest = 0;
    for (const std::string_view parameter : parameters) {
        longest = std::max(longest, partAt(text, parameter));
    }
    return longest;
}

std::string withoutParameters(std::string_view text, std::string_view request)
{
    const Parameters parameters = parametersOf(request);
    std::string rest;
    while (!text.empty()) {
        const std::size_t size = parameterAt(text, parameters);
        rest += (size > 0) ? std::string_view("[...]") : text.substr(0, 1);
        text.remove_prefix(std::max<std::size_t>(size, 1));
    }
    return rest;
}

} // namespace

Reasons Reasons::make()
{
    Reasons reasons;
    reasons.descriptor_ = makeFile(kRoom);
    return reasons;
}

Reasons::~Reasons()
{
    close();
}

Reasons::Reasons(Reasons&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)), text_(std::move(other.text_))
{}

Reasons& Reasons::operator=(Reasons&& other) noexcept
{
    std::swap(descriptor_, other.descriptor_);
    std::swap(text_, other.text_);
    return *this;
}

void Reasons::close()
{
    if (descriptor_ >= 0) {
        ::close(descriptor_);
        descriptor_ = -1;
    }
}

void Reasons::seal()
{
    text_ = contentOf(descriptor_);
    close();
    if (text_.empty()) {
        return;
    }
    descriptor_ = makeFile(kSize);
    const ssize_t written = ::pwrite(descriptor_, text_.data(), text_.size(), 0);
    if (written != static_cast<ssize_t>(text_.size()) ||
        ::fcntl(descriptor_, F_ADD_SEALS, F_SEAL_WRITE | F_SEAL_SEAL) != 0) {
        close();
    }
}

std::string describeReasons(std::string_view text, std::string_view request)
{
    constexpr std::size_t kMost = 400;
    const std::string written = withoutParameters(text, request);
    std::string line;
    for (const char each : withoutLastNewlines(written)) {
        if (line.size() >= kMost) {
            return line + "...";
        }
        if (each == '\n') {
            line += "\\n";
        } else if (isPlain(each)) {
            line += each;
        } else {
            line += "\\x";
            core::appendHex(line, std::string_view(&each, 1));
        }
    }
    return line;
}

std::size_t sendWith(const Reasons& reasons, int socket, std::string_view answer)
{
    const int descriptor = reasons.descriptor();
    if (descriptor < 0 || reasons.text().empty() || answer.empty()) {
        return 0;
    }
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control = {};
    iovec bytes = {const_cast<char*>(answer.data()), answer.size()}; // NOLINT: sendmsg only reads
    msghdr message = {};
    message.msg_iov = &bytes;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    cmsghdr* header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof descriptor);
    std::memcpy(CMSG_DATA(header), &descriptor, sizeof descriptor);
    const ssize_t sent = ::sendmsg(socket, &message, MSG_DONTWAIT | MSG_NOSIGNAL);
    return static_cast<std::size_t>(std::max<ssize_t>(sent, 0));
}

} // namespace service
