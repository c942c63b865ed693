// SPDX-License-Identifier: MIT
//
// remote_access.h: access to the appliance from outside, through a provider that its users sign up
// with.
//
// The errors of these commands are 1, 2 and 3, as described with each. A line has at most 255 bytes
// with its newline, in warp 254; the rest of a longer line is taken as the next line.
#pragma once

#pragma GCC visibility push(default)
extern "C" {

/// "getv": answers one of the provider's values. Its parameter is a key, 32 bits little-endian, and
/// a newline: 1 and 2 for the addresses to sign up and to sign in (the variables "ra_signUpUrl" and
/// "ra_signInUrl"), 3 for the fixed value "2". Answers "getv ", the key, a newline, the value, a
/// newline. Errors: 1 if the variable is not set, 2 for another key, 3 for a malformed key. Traces
/// the key and the value.
void cmd_getv(void);

/// "wags": answers whether remote access is on. Its parameter is the line "system", or the lines
/// "user" and a name. Answers "wags ", the first line with its newline, a byte 1 or 0, and a
/// newline. Errors: 1 if the user's access is not known, 2 for a malformed request or if the
/// program ended in another way.
///
/// For the system it reads the variable "raclient_raenabled"; for a user it runs
/// /usr/bin/ra-enabled get with the name between double quotes, the whole line cut at 255 bytes.
/// Traces the first line and the variable.
void cmd_wags(void);

/// "warp": signs a user up. Its parameters are three lines: the name and two values for the
/// provider, which keep their newlines. Answers "warp ", 0, newline, 0, newline. Errors: 1 if the
/// program refused, 3 if a line is missing or the program was killed or could not be waited for.
///
/// Starts /usr/bin/ractl registerUser with the three texts, without a shell, and waits for it.
/// Traces only an error.
void cmd_warp(void);

/// "wasu": switches a user's remote access. Its parameters are three lines as in warp, all without
/// their newlines, then a byte, 1 to switch it on or 0 to switch it off, and a newline. Answers
/// like warp; for another byte it answers nothing. Errors as in warp, 3 also if no process can be
/// created.
///
/// To switch it on, starts /usr/bin/ractl as warp does. To switch it off, runs /usr/bin/ra-enabled
/// set with the name between double quotes and off, the whole line cut at 255 bytes; exit status 2
/// is error 1, any other is error 3. Traces the first two lines, the line run, and how the program
/// ended.
void cmd_wasu(void);

} // extern "C"
#pragma GCC visibility pop
