// SPDX-License-Identifier: MIT
//
// remote_access.h: reaching the appliance from outside, through a service that its users sign up
// for.
//
// Each command ends with an error of 1, 2 or 3, as it says. Lines are taken up to 255 bytes, in
// warp up to 254, the newline counted; what is left of a longer one is the next.
#pragma once

#pragma GCC visibility push(default)
extern "C" {

/// "getv": tells one of the service's values. Its parameter is a key, 32 bits little-endian, and a
/// newline: 1 and 2 for the addresses to sign up and to sign in (the variables "ra_signUpUrl" and
/// "ra_signInUrl"), 3 for "2". Answers "getv ", the key, a newline, the value, a newline. Errors: 1
/// no such variable, 2 another key, 3 a malformed key. Traces the key and the value.
void cmd_getv(void);

/// "wags": tells whether remote access is on. Its parameter is the line "system", or the lines
/// "user" and a name. Answers "wags ", the first line with its newline, a byte 1 or 0, and a
/// newline. Errors: 1 the user's access cannot be found out, 2 a malformed request, or the program
/// ended otherwise.
///
/// For the system it reads the variable "raclient_raenabled"; for a user it runs
/// /usr/bin/ra-enabled get with the name between double quotes, the whole line cut at 255 bytes.
/// Traces the first line and the variable.
void cmd_wags(void);

/// "warp": signs a user up. Its parameters are three lines: the name and two values of the
/// service's own, which keep their newlines. Answers "warp ", 0, newline, 0, newline. Errors: 1 the
/// program refused, 3 a line is missing or the program could not be waited for or was killed.
///
/// Starts /usr/bin/ractl registerUser with the three texts, without a shell, and waits for it.
/// Traces nothing but an error.
void cmd_warp(void);

/// "wasu": switches a user's remote access. Its parameters are three lines as in warp, all without
/// their newlines, then a byte, 1 to switch it on or 0 to switch it off, and a newline. Answers as
/// warp does, and nothing at all for another byte. Errors as in warp, 3 also when there can be no
/// new process.
///
/// On starts /usr/bin/ractl as warp does; off runs /usr/bin/ra-enabled set with the name between
/// double quotes and off, cut at 255 bytes, where a status of 2 is error 1 and any other is 3.
/// Traces the first two lines, the line run, and how the program ended.
void cmd_wasu(void);

} // extern "C"
#pragma GCC visibility pop
