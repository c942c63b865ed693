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
/// @return 0, or -1 when a shell line could not be started, a file not be opened or the list not be
///         written whole; what has been written by then stays
///
/// Runs the user script's tovGetUsers, cat and grep. Uses PATH with the process id behind it, and
/// that with a "2" behind it; traces only a line that could not be started.
int getUsersList(const char* path);

/// Whether somebody has an account of this very name. "guest" always has one.
///
/// @return 1 or 0; -1 when that could not be found out, which is never to be taken for a 0
///
/// Calls getUsersList on isUserExistedPID in the current folder, and removes that unless it could
/// not be made or opened. Traces the list's size, the list with the name, and the result.
int isUserExisted(const char* name);

/// "lstu": answers the header "lsut" with the number of users besides "guest", and their names, a
/// line each. The names go to standard output, too. Ends with error 0xFF000005 when there is no
/// list, 0x20000006 when it is empty, and 0xFF000007, 0xFF000008 or 0xFF000006 when it cannot be
/// opened, closed or removed; the last two can stand behind the names.
///
/// Calls getUsersList on /tmp/vokcontrol.tmp and removes that. Traces the list's size, each name as
/// it is compared, found and reported, and the number of users.
void cmd_lstu(void);

} // extern "C"
#pragma GCC visibility pop
