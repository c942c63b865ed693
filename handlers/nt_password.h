// SPDX-License-Identifier: MIT
//
// nt_password.h: passwords as SMB servers keep them, MD4 over the password in UTF-16LE.
#pragma once

#include "handlers/smb_passwd.h"

#pragma GCC visibility push(default)
extern "C" {

/// Whether an account has this name, letters of both cases being the same, and this password.
///
/// @param password  in ISO-8859-1: each byte is a character
/// @return 0 when it has; -1 when not, when the account's NT hash is not 32 hexadecimal digits, and
///         when the password cannot be converted
int checkNtPassword(const SmbPasswdEntry* entry, const char* user, const char* password);

} // extern "C"
#pragma GCC visibility pop
