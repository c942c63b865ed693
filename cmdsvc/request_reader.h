// SPDX-License-Identifier: MIT
//
// request_reader.h: takes a request apart, byte by byte. The handlers, the gate, the service's log
// and its count of commands use this same code, so that all of them see the same parameters.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "cmdsvc/commands.h"
#include "cmdsvc/protocol.h"
#include "core/bytes.h"
#include "vokcontrol.h"

namespace cmdsvc {

/// A request's buffer: the request, and zeros up to its end.
using RequestBuffer = std::array<char, VOK_REQUEST_SIZE>;

/// A request in a buffer of its own.
/// @param request  cut at 4096 bytes
[[nodiscard]] constexpr RequestBuffer bufferOf(std::string_view request)
{
    RequestBuffer buffer = {};
    request.copy(buffer.data(), buffer.size());
    return buffer;
}

/// A text as C functions see it: up to its first zero byte.
[[nodiscard]] constexpr std::string_view textOf(std::string_view bytes)
{
    return bytes.substr(0, bytes.find('\0'));
}

/// A text without the newline at its end.
[[nodiscard]] constexpr std::string_view withoutNewline(std::string_view text)
{
    return text.ends_with('\n') ? text.substr(0, text.size() - 1) : text;
}

/// The command's code as a 32-bit word.
[[nodiscard]] constexpr std::uint32_t codeOf(std::string_view request)
{
    return core::u32At(request, 0);
}

/// The parameter count of the request, all 32 bits of it.
[[nodiscard]] constexpr std::uint32_t countOf(std::string_view request)
{
    return core::u32At(request, kCountOffset);
}

/// Reads a request from its first line on. It returns parts of the buffer, which must outlive them.
class RequestReader {
  public:
    RequestReader() = default;

    explicit RequestReader(std::span<const char, VOK_REQUEST_SIZE> buffer)
        : bytes_(buffer.data(), buffer.size())
    {
        // One byte less than the line's buffer, so that a zero always follows the line in it.
        const std::string_view line = takeLine(kLineRoom);
        line.copy(firstLine_.data(), firstLine_.size());
        parameters_ = rest();
    }

    /// The first line in a buffer of its own, zeros after it.
    [[nodiscard]] std::string_view firstLine() const
    {
        return {firstLine_.data(), firstLine_.size()};
    }

    /// The bytes after the first line, whether they have been taken or not.
    [[nodiscard]] std::string_view parameters() const { return parameters_; }

    /// All that is left.
    [[nodiscard]] std::string_view rest() const { return bytes_.substr(position_); }

    /// The next bytes up to and including a newline; at most room - 1 bytes, like fgets. Empty if
    /// nothing is left.
    std::string_view takeLine(std::size_t room)
    {
        const std::string_view most = rest().substr(0, room - 1);
        const std::size_t newline = most.find('\n');
        return takeBytes((newline == std::string_view::npos) ? most.size() : newline + 1);
    }

    /// The next SIZE bytes; fewer if fewer are left.
    std::string_view takeBytes(std::size_t size)
    {
        const std::string_view bytes = rest().substr(0, size);
        position_ += bytes.size();
        return bytes;
    }

    /// The next bytes up to a newline or a zero byte. That byte is taken, but not returned.
    std::string_view takeText()
    {
        const std::string_view text = rest().substr(0, rest().find_first_of({"\n\0", 2}));
        position_ = std::min(position_ + text.size() + 1, bytes_.size());
        return text;
    }

    /// The first line, for a parameter in it. A length byte of 10 is a newline and ends the line
    /// early; then the next line is copied into it, at the offset in the parameter's row.
    std::string_view completeFirstLine(const Parameter& parameter)
    {
        if (firstLine_[kLengthOffset] == '\n') {
            // A byte less, so that a zero always follows the line.
            const std::size_t room = firstLine_.size() - parameter.restOffset;
            takeLine(room).copy(&firstLine_[parameter.restOffset], room);
        }
        return firstLine();
    }

    /// The offset of the length of a parameter in the first line.
    static constexpr std::size_t kLengthOffset = kCodeSize + 1;

  private:
    std::string_view bytes_;
    std::size_t position_ = 0;
    std::string_view parameters_;
    RequestBuffer firstLine_ = {};
};

} // namespace cmdsvc
