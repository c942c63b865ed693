// SPDX-License-Identifier: MIT
//
// password.h: whether somebody is who they say they are.
#pragma once

#pragma GCC visibility push(default)
extern "C" {

/// "wall": checks a password. Its parameters are the lines of the user's name and the password, of
/// which 255 bytes are taken each; what is left of a longer one is the next. Answers "wall " and a
/// newline when the password is right. Ends with error 0xFF000003 when a line is missing, and with
/// 0x00000001 for everything else, so that nobody learns which users there are.
///
/// Reads /usr/private/smbpasswd up to the user's account or to a line that is no account. Traces
/// nothing of it.
void cmd_wall(void);

} // extern "C"
#pragma GCC visibility pop
