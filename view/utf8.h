// SPDX-License-Identifier: MIT
//
// utf8.h: the characters of foreign text. A name or a value may be any bytes.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace view {

struct Character {
    char32_t code;
    std::size_t size; ///< in bytes
};

/// The first character of a text; nothing if the text is empty or does not begin with a valid
/// character. Callers then take the first byte alone.
[[nodiscard]] std::optional<Character> firstCharacter(std::string_view text);

[[nodiscard]] bool isUtf8(std::string_view text);

} // namespace view
