// SPDX-License-Identifier: MIT
//
// kept_files.h: files that the module makes open to all accounts; the service closes them to all
// accounts except its own. A link at their paths is not followed, and anything that is not a
// regular file is not changed.
#pragma once

#include <string>
#include <string_view>

namespace service {

/// An account that can open this file can lock it, and then no program can read or write variables.
inline constexpr const char* kVariableLock = "/etc/pelconfig/system_var_lck";

inline constexpr const char* kTraceFile = "/tmp/dbg_vokcontrol.txt";

/// Makes the variables' lock with mode 0600. A file with another mode or owner is replaced, because
/// another account may have it open: when nothing holds its lock any more, or after one second.
/// Failures are logged.
void protectVariableLock(const std::string& path = kVariableLock);

/// Gives the private file the mode 0600, if there is one.
void closePrivateFile();

/// Empties the trace file, if it belongs to this user and has no second name (hard link).
void emptyTraces();

/// The same if this request has traced a password: only "crat", which creates a user, does.
void emptyTracesAfter(std::string_view request);

} // namespace service
