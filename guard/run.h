// SPDX-License-Identifier: MIT
//
// run.h: starts the shell.
#pragma once

namespace guard {

/// Runs a line as system() does: while it runs, SIGINT and SIGQUIT are ignored and SIGCHLD is
/// blocked. guard.h describes the shell's environment.
/// @return the shell's wait status; an exit with 127, and errno, if there is no shell; -1, and
///         errno, if no process can be created or the shell is reaped elsewhere
int runShell(const char* line);

} // namespace guard
