// SPDX-License-Identifier: MIT
//
// frame.h: the bytes of a request, made from its command's row and the values of its parameters.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "cmdsvc/commands.h"

namespace client {

/// A parameter's value: a text, or a number if the parameter is a word or a byte.
using Value = std::variant<std::string, std::uint32_t>;

/// A request's first line: code, blank, count and newline.
[[nodiscard]] std::string firstLine(std::string_view code, std::uint32_t count);

/// The bytes of a 32-bit number in a request.
[[nodiscard]] std::string wordBytes(std::uint32_t value);

/// Checks that a text can be a parameter line.
/// @return the same text
/// @throws Failure of wrong usage if it contains a newline or a zero byte
const std::string& checkedLine(const std::string& text);

/// Makes a whole request. The row has the parameter count and the layout of each value. A value in
/// the first line is a length and the text.
/// @param values  in the order of the row's parameters; those at its end may be left out
/// @throws Failure of wrong usage if a text cannot be sent unchanged
[[nodiscard]] std::string makeFrame(const cmdsvc::Command& command,
                                    const std::vector<Value>& values);

} // namespace client
