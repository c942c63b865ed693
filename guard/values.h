// SPDX-License-Identifier: MIT
//
// values.h: the characters that names and values on a shell line may have.
#pragma once

#include <algorithm>
#include <string_view>

namespace guard {

/// Whether a character between double quotes means only itself to a shell.
[[nodiscard]] constexpr bool isInertInDoubleQuotes(char c)
{
    return std::string_view("\"$`\\\n").find(c) == std::string_view::npos;
}

/// The same between single quotes. No value of the module has more than one line.
[[nodiscard]] constexpr bool isInertInSingleQuotes(char c)
{
    return c != '\'' && c != '\n';
}

[[nodiscard]] constexpr bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// A character of a function's name.
[[nodiscard]] constexpr bool isOfIdentifier(char c)
{
    return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

/// A character that means only itself without quotes, or a blank between two words.
[[nodiscard]] constexpr bool isOfWords(char c)
{
    const bool isBeyondAscii = static_cast<unsigned char>(c) >= 0x80;
    return isOfIdentifier(c) || isBeyondAscii ||
           std::string_view(" .,-+@%=:/").find(c) != std::string_view::npos;
}

/// Whether the collector can measure a share of this name. If not, the share must be renamed.
[[nodiscard]] constexpr bool isMeasurable(std::string_view shareName)
{
    return std::ranges::all_of(shareName, isInertInDoubleQuotes);
}

} // namespace guard
