// SPDX-License-Identifier: MIT
//
// protocol.h: requests and answers of the command service, byte by byte.
//
//   request   0    4  command code, four characters
//             4    1  a blank; not checked
//             5    4  parameter count, 32 bits little-endian; only the low byte is checked
//             9       parameters, as each command wants them
//
// The request's first line ends at its first newline byte, wherever that stands. Answers take one of
// these shapes:
//
//   word      0    4  status code, 32 bits little-endian
//
//   error     0    5  "erro "
//             5    4  status code, 32 bits little-endian
//
//   status    0    4  command code
//             4    1  a blank
//             5    4  status code, 32 bits little-endian
//             9    1  0
//
//   header    0    4  tag, four characters
//             4    1  a blank
//             5    4  count, 32 bits little-endian
//             9    1  newline; lines of text follow
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace cmdsvc {

inline constexpr std::size_t kCodeSize = 4;
inline constexpr std::size_t kWordSize = 4;
inline constexpr std::size_t kCountOffset = kCodeSize + 1;
inline constexpr std::size_t kParametersOffset = kCountOffset + kWordSize;
inline constexpr std::size_t kHeaderSize = kParametersOffset + 1;

inline constexpr std::string_view kErrorTag = "erro ";

/// A command code as the word that travels.
[[nodiscard]] constexpr std::uint32_t codeWord(std::string_view code)
{
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < kCodeSize; ++i) {
        word |= static_cast<std::uint32_t>(static_cast<unsigned char>(code[i])) << (8U * i);
    }
    return word;
}

// Status codes.
inline constexpr std::uint32_t kGood = 0x00000000;
inline constexpr std::uint32_t kUserListEmpty = 0x20000006;
inline constexpr std::uint32_t kWrongCountOfShareCommand = 0xC1000001;
inline constexpr std::uint32_t kWrongCount = 0xFF000003;
inline constexpr std::uint32_t kCannotStat = 0xFF000005;
inline constexpr std::uint32_t kCannotRemove = 0xFF000006;
inline constexpr std::uint32_t kCannotOpen = 0xFF000007;
inline constexpr std::uint32_t kCannotClose = 0xFF000008;

} // namespace cmdsvc
