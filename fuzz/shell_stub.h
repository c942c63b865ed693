// SPDX-License-Identifier: MIT
//
// shell_stub.h: a shell that runs nothing. Programs with it have a system(), a fork() and a
// waitpid() that start no process: every shell line ends with the same status, and leaves the same
// text in the file that its output goes to. Only the removal of a work file is done, and traces
// leave nothing.
#pragma once

#include <string_view>

namespace fuzz {

/// What every shell line and every child comes to from now on.
/// @param exitStatus  0 to 254; with 255 none can be started
/// @param output      must live as long as lines are run
void setShell(int exitStatus, std::string_view output);

} // namespace fuzz
