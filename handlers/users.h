// SPDX-License-Identifier: MIT
//
// users.h: who has an account on the appliance.
#pragma once

#pragma GCC visibility push(default)
extern "C" {

/// Lists the users as a one-line script fragment, without a newline: return ["guest", "anna"]; with
/// "guest" always first. Names go in as the user script tells them.
///
/// @param path  the file to write; it is replaced
/// @return 0, or -1 when a shell line could not be started or a file not be opened; what has been
///         written by then stays
///
/// Runs the user script's tovGetUsers, cat and grep. Uses PATH with the process id behind it, and
/// that with a "2" behind it; traces only what failed.
int getUsersList(const char* path);

/// Whether somebody has an account of this very name. "guest" always has one.
///
/// @return 1 or 0; -1 when that could not be found out, which is never to be taken for a 0
///
/// Calls getUsersList; uses isUserExistedPID in the current folder and removes it.
int isUserExisted(const char* name);

/// "lstu": answers the number of users besides "guest" and their names, a line each. The names go to
/// standard output, too.
///
/// Calls getUsersList; uses /tmp/vokcontrol.tmp.
void cmd_lstu(void);

} // extern "C"
#pragma GCC visibility pop
