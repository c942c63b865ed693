// SPDX-License-Identifier: MIT
//
// shell_stub.h: a shell that runs nothing. Programs with it have a system(), a fork() and a
// waitpid() that start no process: every shell line ends with the same status, and writes the same
// text to its output file. Only the removal of a work file is carried out, and traces write
// nothing.
#pragma once

#include <string_view>

namespace fuzz {

/// Sets how every shell line and every child ends from now on.
/// @param exitStatus  0 to 254; 255 means that none can be started
/// @param output      must exist as long as lines are run
void setShell(int exitStatus, std::string_view output);

} // namespace fuzz
