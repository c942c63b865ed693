// SPDX-License-Identifier: MIT
//
// variable_line.h: a line of the variable file: a name, blanks or tabs, "=", blanks or tabs, and
// the value up to the end of the line.
#pragma once

#include <cstddef>
#include <cstdio>
#include <optional>
#include <string_view>

#include "core/core.h"

namespace core {

/// Reads the variable file in pieces of at most 511 bytes, unchanged, including zero bytes.
class VariableFileReader {
  public:
    explicit VariableFileReader(FILE* file) : file_(file) {}

    /// Reads the next piece: a line with its newline, or a part of a longer one.
    /// @return false at the end of the file
    bool next();

    [[nodiscard]] std::string_view piece() const { return {buffer_.data(), size_}; }

    /// The piece as a line that can hold a variable: a whole line up to its first zero byte.
    /// Nothing if the piece is only a part of a line.
    [[nodiscard]] std::optional<std::string_view> line() const;

    /// Whether the last piece ended within a line.
    [[nodiscard]] bool endsWithinLine() const { return isWithinLine_; }

  private:
    FILE* file_;
    std::array<char, kValueSize> buffer_{};
    std::size_t size_ = 0;
    bool isWithinLine_ = false;
    bool isWhole_ = false;
};

/// The value that a line holds for a name, without the line's end; nothing if the line has another
/// name.
[[nodiscard]] std::optional<std::string_view> valueOf(std::string_view line, std::string_view name);

} // namespace core
