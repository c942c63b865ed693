// SPDX-License-Identifier: MIT
//
// values.h: what may stand in the places of a shell line where the module puts names and values.
#pragma once

#include <algorithm>
#include <string_view>

namespace guard {

/// Whether a character means nothing but itself to a shell between double quotes.
[[nodiscard]] constexpr bool isInertInDoubleQuotes(char c)
{
    return std::string_view("\"$`\\\n").find(c) == std::string_view::npos;
}

/// The same between single quotes. No value of the module's has more than one line.
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

/// A character that means nothing but itself without quotes, or a blank between two words of them.
[[nodiscard]] constexpr bool isOfWords(char c)
{
    const bool isBeyondAscii = static_cast<unsigned char>(c) >= 0x80;
    return isOfIdentifier(c) || isBeyondAscii ||
           std::string_view(" .,-+@%=:/").find(c) != std::string_view::npos;
}

/// Whether the collector can measure a share of this name. One that it cannot has to be renamed.
[[nodiscard]] constexpr bool isMeasurable(std::string_view shareName)
{
    return std::ranges::all_of(shareName, isInertInDoubleQuotes);
}

} // namespace guard
