// SPDX-License-Identifier: MIT
//
// run.h: the shell's start.
#pragma once

namespace guard {

/// Runs a line as system() does: while it runs, SIGINT and SIGQUIT are ignored and SIGCHLD waits.
/// guard.h tells what the shell is started with.
/// @return the shell's wait status; an exit with 127, and errno, where there is no shell; -1, and
///         errno, where there is no process left for it or somebody else has reaped it
int runShell(const char* line);

} // namespace guard
