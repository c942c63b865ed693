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

/// A 32-bit number as it travels.
[[nodiscard]] std::string wordBytes(std::uint32_t value);

/// A text that may be a parameter line.
/// @return the same text
/// @throws Failure of wrong usage if it holds a newline or a zero byte
const std::string& checkedLine(const std::string& text);

/// A whole request. The row says how many parameters it announces and how each value is laid out.
/// A value in the first line is all that follows its length there.
/// @param values  in the order of the row's parameters; those at its end may be left out
/// @throws Failure of wrong usage if a text cannot be sent as what it is
[[nodiscard]] std::string makeFrame(const cmdsvc::Command& command,
                                    const std::vector<Value>& values);

} // namespace client
