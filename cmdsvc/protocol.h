// SPDX-License-Identifier: MIT
//
// protocol.h: requests and answers of the command service, byte by byte.
//
//   request   0    4  command code, four characters
//             4    1  a blank; not checked
//             5    4  parameter count, 32 bits little-endian; only the low byte is checked
//             9       parameters, as each command wants them
//
// The request's first line ends at its first newline byte, wherever that stands. Answers take one
// of these shapes:
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
//
// Where there is no answer of a command's to send, the service that carries requests sends a status
// of its own, with the code "serv".
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace cmdsvc {

inline constexpr std::size_t kCodeSize = 4;
inline constexpr std::size_t kWordSize = 4;
inline constexpr std::size_t kCountOffset = kCodeSize + 1;
inline constexpr std::size_t kParametersOffset = kCountOffset + kWordSize;
inline constexpr std::size_t kHeaderSize = kParametersOffset + 1;

/// The longest share name that a request may hold, in bytes.
inline constexpr std::size_t kLongestShareName = 64;
inline constexpr std::size_t kLongestUserName = 32;

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

// Status codes that several commands share.
inline constexpr std::uint32_t kGood = 0x00000000;
inline constexpr std::uint32_t kNoMemory = 0xFF000001;
inline constexpr std::uint32_t kMalformed = 0xFF000003; ///< a parameter, or the number of them
inline constexpr std::uint32_t kCommandFailed = 0xFF000004;
inline constexpr std::uint32_t kCannotStat = 0xFF000005;
inline constexpr std::uint32_t kCannotRemove = 0xFF000006;
inline constexpr std::uint32_t kCannotOpen = 0xFF000007;
inline constexpr std::uint32_t kCannotClose = 0xFF000008;

// Asking for shares.
inline constexpr std::uint32_t kWrongCountOfShareCommand = 0xC1000001;
inline constexpr std::uint32_t kCannotRemoveListing = 0xC1000001;
inline constexpr std::uint32_t kBadShareName = 0xC1000003;
inline constexpr std::uint32_t kSharePropertyUnknown = 0xF0000001;

// Creating shares.
inline constexpr std::uint32_t kShareNameTaken = 0x20000001;
inline constexpr std::uint32_t kShareNameTooLong = 0x20000003;
inline constexpr std::uint32_t kNoSuchUser = 0x20000006;

// Users.
inline constexpr std::uint32_t kUserNameTaken = 0x10000001;
inline constexpr std::uint32_t kUserNameTooLong = 0x10000002;
inline constexpr std::uint32_t kPasswordTooLong = 0x10000003;
inline constexpr std::uint32_t kUserNotCreated = 0x10000005;
inline constexpr std::uint32_t kUserListEmpty = 0x20000006;

// Backup status and drives.
inline constexpr std::uint32_t kReportNotSaved = 0xC2000002;
inline constexpr std::uint32_t kNoDate = 0xC2000003;
inline constexpr std::uint32_t kDriveCountReadable = 0xD0000001;

// Passwords.
inline constexpr std::uint32_t kNotVerified = 0x00000001;

// Host settings.
inline constexpr std::uint32_t kStartPageNotSet = 0x50000001;
inline constexpr std::uint32_t kHostNameTooLong = 0x50000003;
inline constexpr std::uint32_t kWorkGroupTooLong = 0x50000004;
inline constexpr std::uint32_t kNameNotSet = 0x50000005;
inline constexpr std::uint32_t kUnknownLanguage = 0x50000006;

// The build.
inline constexpr std::uint32_t kCannotOpenBuild = 0x40000001;
inline constexpr std::uint32_t kCannotCloseBuild = 0x40000002;
inline constexpr std::uint32_t kCannotStatBuild = 0x40000003;
inline constexpr std::uint32_t kBadBuildSize = 0x40000004;

// The private file, sent to the appliance and fetched from it.
inline constexpr std::uint32_t kCannotCreatePrivate = 0x60000001;
inline constexpr std::uint32_t kNothingSent = 0x60000002;
inline constexpr std::uint32_t kCannotWritePrivate = 0x60000003;
inline constexpr std::uint32_t kTooLittleSent = 0x60000004;
inline constexpr std::uint32_t kNoEndMark = 0x60000005;
inline constexpr std::uint32_t kCannotClosePrivate = 0x60000006;
inline constexpr std::uint32_t kNoPrivate = 0x70000001;
inline constexpr std::uint32_t kPrivateEmpty = 0x70000002;
inline constexpr std::uint32_t kCannotOpenPrivate = 0x70000003;

// Setup.
inline constexpr std::uint32_t kSetupDone = 0x80000001;
inline constexpr std::uint32_t kNoLanguage = 0xB0000001;
inline constexpr std::uint32_t kLanguageWithoutCode = 0xB0000002;
inline constexpr std::uint32_t kNoPublicShareName = 0xB0000003;

// Remote access; each of these commands has its own meaning for them.
inline constexpr std::uint32_t kRemoteRefused = 0x00000001;
inline constexpr std::uint32_t kRemoteBadRequest = 0x00000002;
inline constexpr std::uint32_t kRemoteFailed = 0x00000003;

// The service's own.
inline constexpr std::string_view kServiceCode = "serv";
inline constexpr std::uint32_t kRequestTimedOut = 0x53000001;
inline constexpr std::uint32_t kRequestFailed = 0x53000002;
inline constexpr std::uint32_t kRequestNotStarted = 0x53000003;
inline constexpr std::uint32_t kRequestTooLong = 0x53000004;
inline constexpr std::uint32_t kNotAdmitted = 0x53000005;

/// A status answer.
using StatusBytes = std::array<char, kHeaderSize>;

[[nodiscard]] constexpr StatusBytes statusBytes(std::string_view code, std::uint32_t status)
{
    StatusBytes bytes = {};
    code.copy(bytes.data(), kCodeSize);
    bytes[kCodeSize] = ' ';
    for (std::size_t i = 0; i < kWordSize; ++i) {
        bytes[kCountOffset + i] = static_cast<char>((status >> (8U * i)) & 0xFFU);
    }
    return bytes;
}

} // namespace cmdsvc
