// SPDX-License-Identifier: MIT
//
// request_reader.h: takes a request apart just as the module's handlers do, byte by byte, so that
// who looks at it first sees what they will see.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "vokcontrol.h"

namespace service {

/// A request in its buffer, zeros behind it.
class RequestReader {
  public:
    /// @param request  at most 4096 bytes
    explicit RequestReader(std::string_view request);

    /// The request's first line, zeros behind it, with nothing left out.
    [[nodiscard]] const std::array<char, VOK_REQUEST_SIZE>& firstLine() const { return line_; }

    /// What follows the first line, taken or not.
    [[nodiscard]] std::string_view parameters() const;

    /// The next bytes up to a newline, which they include; at most size - 1 of them, as fgets takes
    /// them. Empty at the end.
    [[nodiscard]] std::string_view takeLine(std::size_t size);

    /// The next byte, or nothing at the end.
    [[nodiscard]] std::string_view takeByte();

    /// All that is left.
    [[nodiscard]] std::string_view rest() const;

  private:
    std::array<char, VOK_REQUEST_SIZE> buffer_ = {};
    std::array<char, VOK_REQUEST_SIZE> line_ = {};
    std::size_t position_ = 0;
    std::size_t firstLineSize_ = 0;
};

/// A text as C functions see it: up to its first zero byte.
[[nodiscard]] std::string_view textOf(std::string_view bytes);

} // namespace service
