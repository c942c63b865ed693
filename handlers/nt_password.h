// SPDX-License-Identifier: MIT
//
// nt_password.h: passwords in the form of SMB servers: MD4 over the password in UTF-16LE.
#pragma once

#include "handlers/smb_passwd.h"

#pragma GCC visibility push(default)
extern "C" {

/// Whether an account has this name and this password. Letters of both cases count as the same in
/// the name.
///
/// @param password  in ISO-8859-1, one byte per character
/// @return 0 if it has; -1 if not, if the account's NT hash is not 32 hexadecimal digits, or if the
///         password cannot be converted
int checkNtPassword(const SmbPasswdEntry* entry, const char* user, const char* password);

} // extern "C"
#pragma GCC visibility pop
