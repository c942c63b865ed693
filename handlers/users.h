// SPDX-License-Identifier: MIT
//
// users.h: the list of users, and the search in it.
#pragma once

#pragma GCC visibility push(default)
extern "C" {

/// Lists the users as a one-line script fragment, without a newline: return ["guest", "anna"]; with
/// "guest" always first. Names are written as the user script prints them.
///
/// @param path  the file to write; it is replaced
/// @return 0, or -1 if a shell line could not be started, a file not be opened or the list not be
///         written whole; an incomplete list stays
///
/// Runs the user script's tovGetUsers, cat and grep. Uses the files PATHPID and PATHPID2 (PID: the
/// process id); traces only a line that could not be started.
int getUsersList(const char* path);

/// Whether a user of exactly this name exists. "guest" always exists.
///
/// @return 1 or 0; -1 if the search failed; callers must not take that for 0
///
/// Calls getUsersList on isUserExistedPID in the current folder, and removes that file unless it
/// could not be made or opened. Traces the list's size, the list with the name, and the result.
int isUserExisted(const char* name);

/// "lstu": answers the header "lsut" with the number of users besides "guest", and their names, a
/// line each. Prints the names to standard output, too. Ends with error 0xFF000005 if there is no
/// list, 0x20000006 if it is empty, and 0xFF000007, 0xFF000008 or 0xFF000006 if it cannot be
/// opened, closed or removed; the last two can follow the names.
///
/// Calls getUsersList on /tmp/vokcontrol.tmp and removes that file. Traces the list's size, each
/// name as it is compared, found and reported, and the number of users.
void cmd_lstu(void);

} // extern "C"
#pragma GCC visibility pop
