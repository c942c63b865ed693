// SPDX-License-Identifier: MIT
//
// kept_files.h: files that the module makes open to all accounts, and that the service keeps closed
// to all but its own user. What stands at their paths is never followed if it is a link, and left
// alone if it is no regular file.
#pragma once

#include <string>
#include <string_view>

namespace service {

/// Who may open this file can lock it, and so stop everybody who reads or writes variables.
inline constexpr const char* kVariableLock = "/etc/pelconfig/system_var_lck";

inline constexpr const char* kTraceFile = "/tmp/dbg_vokcontrol.txt";

/// Makes the variables' lock with mode 0600. One that has another mode or owner is replaced, as
/// somebody may have it open still: once its holder has finished, or after a second. What cannot be
/// done is logged.
void protectVariableLock(const std::string& path = kVariableLock);

/// Gives the private file the mode 0600.
void closePrivateFile();

/// Empties the trace file, if it is this user's, and no other name of another file.
void emptyTraces();

/// The same if this request has traced a password: one that creates a user ("crat") does.
void emptyTracesAfter(std::string_view request);

} // namespace service
