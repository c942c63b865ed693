// SPDX-License-Identifier: MIT
//
// smb_passwd.h: the SMB password file, one account per line:
//
//   name:id:LM hash:NT hash:[flags]:LCT-last change:
//
// Both hashes are 32 hexadecimal digits. The id is decimal, with or without a sign; the last change
// is hexadecimal, in seconds since the epoch, and may be missing. Text after the sixth colon is
// ignored. Lines that begin with "#" are comments. A line has at most 1023 bytes; the rest of a
// longer one is a line of its own.
#pragma once

#include <cstdint>

#pragma GCC visibility push(default)
extern "C" {

/// An open password file.
struct SmbPasswdHandle;

/// Account flags.
enum SmbPasswdFlags : std::uint8_t {
    kSmbUser = 0x01,         ///< U
    kSmbNoPassword = 0x02,   ///< N
    kSmbDisabled = 0x04,     ///< D
    kSmbNeverExpires = 0x08, ///< X
    kSmbWorkstation = 0x10,  ///< W
};

/// An account. Fields are cut to their sizes. An NT hash of more than 32 characters fills its field
/// without a terminator, and matches no password.
struct SmbPasswdEntry {
    char name[256];   ///< terminated
    std::int32_t uid; ///< an id outside the range becomes the nearest one in it
    char lmHash[33];  ///< terminated
    char ntHash[33];
    std::uint8_t flags;
    std::uint32_t lastChange; ///< 0xFFFFFFFF for any later time
};

/// Opens a password file.
///
/// @param out  the handle, on success; closeSmbPasswd() releases it
/// @return 0, or -1 with errno set
int openSmbPasswd(SmbPasswdHandle** out, const char* path);

/// Reads the next account.
///
/// @return 0; -1 at the end of the file; -1 with errno EINVAL for a line that is no account; the
///         entry is not meaningful after a -1
int readSmbPasswdEntry(SmbPasswdHandle* handle, SmbPasswdEntry* entry);

/// Goes back to the first account.
/// @return 0
int rewindSmbPasswd(SmbPasswdHandle* handle);

/// Closes the file and releases the handle.
/// @return 0
int closeSmbPasswd(SmbPasswdHandle* handle);

} // extern "C"
#pragma GCC visibility pop
