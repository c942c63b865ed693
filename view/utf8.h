// SPDX-License-Identifier: MIT
//
// utf8.h: the characters of foreign text. A name or a value may be any bytes at all.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace view {

struct Character {
    char32_t code;
    std::size_t size; ///< in bytes
};

/// The character that a text starts with; nothing if the text is empty or its first byte starts no
/// character. Whoever goes through a text takes such a byte by itself.
[[nodiscard]] std::optional<Character> firstCharacter(std::string_view text);

[[nodiscard]] bool isUtf8(std::string_view text);

} // namespace view
