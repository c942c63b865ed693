// SPDX-License-Identifier: MIT
//
// doctor_lines.h: takes an answer of the appliance's apart, as the module does. Values in, values
// out; the results are parts of the text.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace client {

using Lines = std::vector<std::string_view>;

/// The lines of a text, without their newlines.
[[nodiscard]] Lines linesOf(std::string_view text);

/// The text between two marks, both of which are in one line; nothing if one is missing.
[[nodiscard]] std::optional<std::string_view> between(std::string_view line, std::string_view open,
                                                      std::string_view close);

/// The rest of the first line that has a mark, after the mark; nothing if no line has it.
[[nodiscard]] std::optional<std::string_view> after(std::string_view text, std::string_view mark);

/// A text in quotes, cut to its first 60 bytes.
[[nodiscard]] std::string quoteStart(std::string_view text);

} // namespace client
