// SPDX-License-Identifier: MIT
//
// fragment_format.h: which texts of a share list the collector takes for names.
#pragma once

#include "core/bytes.h"

namespace sharestatus {

/// Whether a character separates two names of the list. A name ends before it.
[[nodiscard]] constexpr bool isSeparator(char c)
{
    return c == ',' || c == '"' || c == ']';
}

/// Whether a character can start a name; the one after it tells which letter of two bytes it is.
/// U+0080 to U+00BF (lead byte 0xC2) are signs and blanks, not letters, so they are skipped.
[[nodiscard]] constexpr bool startsName(char first, char second)
{
    const std::uint8_t lead = core::byteOf(first);
    const std::uint8_t trail = core::byteOf(second);
    const bool isLetter = core::isAsciiAlphanumeric(lead) || lead == '_';
    return isLetter || (lead >= 0xC3 && lead <= 0xDF && trail >= 0x80 && trail <= 0xBF);
}

} // namespace sharestatus
