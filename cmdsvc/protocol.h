// SPDX-License-Identifier: MIT
//
// protocol.h: requests and answers of the command service, byte by byte.
//
//   request   0    4  command code, four characters
//             4    1  a blank; not checked
//             5    4  parameter count, 32 bits little-endian; only the low byte is checked
//             9       parameters, as each command takes them
//
// The request's first line ends at its first newline byte, even if that is part of a number. An
// answer has one of these shapes:
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
// If a command leaves no answer that can be sent, the service sends a status of its own, with the
// code "serv".
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "core/bytes.h"

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

/// A command code as a 32-bit word.
[[nodiscard]] constexpr std::uint32_t codeWord(std::string_view code)
{
    return core::getU32(std::span(code).first<kCodeSize>());
}

/// A status code, as answers hold it. A handler returns the one that its command ends with. Some
/// codes have another meaning in each command that answers them.
enum class [[nodiscard]] Status : std::uint32_t{
    // Of several commands.
    kGood = 0x00000000,
    kNoMemory = 0xFF000001,
    kMalformed = 0xFF000003, ///< a parameter, or the number of them
    kCommandFailed = 0xFF000004,
    kCannotStat = 0xFF000005,
    kCannotRemove = 0xFF000006,
    kCannotOpen = 0xFF000007,
    kCannotClose = 0xFF000008,

    // Asking for shares.
    kWrongCountOfShareCommand = 0xC1000001,
    kCannotRemoveListing = 0xC1000001,
    kBadShareName = 0xC1000003,
    kSharePropertyUnknown = 0xF0000001,

    // Creating shares.
    kShareNameTaken = 0x20000001,
    kShareNameTooLong = 0x20000003,
    kNoSuchUser = 0x20000006,

    // Users.
    kUserNameTaken = 0x10000001,
    kUserNameTooLong = 0x10000002,
    kPasswordTooLong = 0x10000003,
    kUserNotCreated = 0x10000005,
    kUserListEmpty = 0x20000006,

    // Backup status and drives.
    kReportNotSaved = 0xC2000002,
    kNoDate = 0xC2000003,
    kDriveCountReadable = 0xD0000001,

    // Passwords.
    kNotVerified = 0x00000001,

    // Host settings.
    kStartPageNotSet = 0x50000001,
    kHostNameTooLong = 0x50000003,
    kWorkGroupTooLong = 0x50000004,
    kNameNotSet = 0x50000005,
    kUnknownLanguage = 0x50000006,

    // The build.
    kCannotOpenBuild = 0x40000001,
    kCannotCloseBuild = 0x40000002,
    kCannotStatBuild = 0x40000003,
    kBadBuildSize = 0x40000004,

    // The private file: sending it and fetching it.
    kCannotCreatePrivate = 0x60000001,
    kNothingSent = 0x60000002,
    kCannotWritePrivate = 0x60000003,
    kTooLittleSent = 0x60000004,
    kNoEndMark = 0x60000005,
    kCannotClosePrivate = 0x60000006,
    kNoPrivate = 0x70000001,
    kPrivateEmpty = 0x70000002,
    kCannotOpenPrivate = 0x70000003,

    // Setup.
    kSetupDone = 0x80000001,
    kNoLanguage = 0xB0000001,
    kLanguageWithoutCode = 0xB0000002,
    kNoPublicShareName = 0xB0000003,

    // Remote access; each command gives these codes its own meaning.
    kRemoteRefused = 0x00000001,
    kRemoteBadRequest = 0x00000002,
    kRemoteFailed = 0x00000003,

    // Of the service itself.
    kRequestTimedOut = 0x53000001,
    kRequestFailed = 0x53000002,
    kRequestNotStarted = 0x53000003,
    kRequestTooLong = 0x53000004,
    kNotAdmitted = 0x53000005,
    kServiceStopping = 0x53000006,
};
using enum Status;

/// A status code as a 32-bit word.
[[nodiscard]] constexpr std::uint32_t wordOf(Status status)
{
    return static_cast<std::uint32_t>(status);
}

/// The tag of the statuses that the service sends on its own.
inline constexpr std::string_view kServiceCode = "serv";

/// A status answer.
using StatusBytes = std::array<char, kHeaderSize>;

[[nodiscard]] constexpr StatusBytes statusBytes(std::string_view code, Status status)
{
    StatusBytes bytes = {};
    code.copy(bytes.data(), kCodeSize);
    bytes[kCodeSize] = ' ';
    core::putU32(std::span(bytes).subspan<kCountOffset, kWordSize>(), wordOf(status));
    return bytes;
}

/// The start of an answer with a header.
using HeaderBytes = std::array<char, kHeaderSize>;

[[nodiscard]] constexpr HeaderBytes headerBytes(std::string_view tag, std::uint32_t count)
{
    HeaderBytes bytes = {};
    tag.copy(bytes.data(), kCodeSize);
    bytes[kCodeSize] = ' ';
    core::putU32(std::span(bytes).subspan<kCountOffset, kWordSize>(), count);
    bytes.back() = '\n';
    return bytes;
}

} // namespace cmdsvc
