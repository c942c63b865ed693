// SPDX-License-Identifier: MIT
//
// user_creation.h: creates users.
#pragma once

#pragma GCC visibility push(default)
extern "C" {

/// "crat": creates a user. Its parameters are the lines of the name and the password, at most 32
/// characters each. Answers a bare word: 0, or 0xFF000003 for a line without its newline,
/// 0x10000002 or 0x10000003 for a name or a password that is too long, 0x10000001 for a name that
/// is taken or reserved, 0xFF000004 if the search for the name failed, 0x10000005 if the user
/// script failed, 0xFF000001 if there is no memory.
///
/// Calls isUserExisted and isNameAllowed, and runs the user script's tovAddUser with both texts
/// between single quotes, unchanged. Traces the name, each of its bytes, the password, and the line
/// run with its result.
void cmd_crat(void);

} // extern "C"
#pragma GCC visibility pop
