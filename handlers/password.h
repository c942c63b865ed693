// SPDX-License-Identifier: MIT
//
// password.h: checks a user's password.
#pragma once

#pragma GCC visibility push(default)
extern "C" {

/// "wall": checks a password. Its parameters are two lines, the user's name and the password, at
/// most 255 bytes each; the rest of a longer line is taken as the next line. Answers "wall " and a
/// newline if the password is right. Ends with error 0xFF000003 if a line is missing, and with
/// 0x00000001 in every other case, so that the answer does not reveal which users exist.
///
/// Reads /usr/private/smbpasswd up to the user's account or to a line that is no account. Traces
/// nothing from that file.
void cmd_wall(void);

} // extern "C"
#pragma GCC visibility pop
