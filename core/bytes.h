// SPDX-License-Identifier: MIT
//
// bytes.h: integers in files and frames, little-endian, coded byte by byte so that neither the
// host's order nor its alignment matters. Bytes as hexadecimal digits. The letters and the upper
// case that names are compared by; the locale of the calling process must not change these.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace core {

[[nodiscard]] constexpr std::uint8_t byteOf(char value)
{
    return static_cast<std::uint8_t>(value);
}

constexpr void putU16(std::span<char, 2> out, std::uint16_t value)
{
    out[0] = static_cast<char>(value & 0xFFU);
    out[1] = static_cast<char>(value >> 8U);
}

/// The 4 bytes of a 32-bit number.
[[nodiscard]] constexpr std::array<char, 4> u32Bytes(std::uint32_t value)
{
    std::array<char, 4> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>((value >> (8U * i)) & 0xFFU);
    }
    return bytes;
}

constexpr void putU32(std::span<char, 4> out, std::uint32_t value)
{
    std::ranges::copy(u32Bytes(value), out.begin());
}

[[nodiscard]] constexpr std::uint16_t getU16(std::span<const char, 2> in)
{
    return static_cast<std::uint16_t>(byteOf(in[0]) | (byteOf(in[1]) << 8U));
}

[[nodiscard]] constexpr std::uint32_t getU32(std::span<const char, 4> in)
{
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < in.size(); ++i) {
        value |= static_cast<std::uint32_t>(byteOf(in[i])) << (8U * i);
    }
    return value;
}

/// The 32 bits that begin at an offset. Bytes after the end count as zero.
[[nodiscard]] constexpr std::uint32_t u32At(std::string_view bytes, std::size_t offset)
{
    std::array<char, 4> word{};
    const std::string_view rest = bytes.substr(std::min(offset, bytes.size()), word.size());
    std::ranges::copy(rest, word.begin());
    return getU32(word);
}

inline constexpr std::string_view kHexDigits = "0123456789abcdef";

/// Appends each byte's two hexadecimal digits to a text of any type.
template <class Text, class Bytes> constexpr void appendHex(Text& text, const Bytes& bytes)
{
    for (const auto byte : bytes) {
        const auto value = static_cast<std::uint8_t>(byte);
        text += kHexDigits[value >> 4U];
        text += kHexDigits[value & 0x0FU];
    }
}

[[nodiscard]] constexpr bool isAsciiAlphanumeric(std::uint8_t value)
{
    return (value >= '0' && value <= '9') || (value >= 'A' && value <= 'Z') ||
           (value >= 'a' && value <= 'z');
}

[[nodiscard]] constexpr char toAsciiUpper(char value)
{
    return (value >= 'a' && value <= 'z') ? static_cast<char>(value - 'a' + 'A') : value;
}

/// Whether two texts are equal; letters of both cases count as the same.
[[nodiscard]] constexpr bool equalIgnoringCase(std::string_view one, std::string_view other)
{
    return std::ranges::equal(one, other, {}, toAsciiUpper, toAsciiUpper);
}

} // namespace core
