// SPDX-License-Identifier: MIT
//
// builtin_commands.h: commands that need no handler of their own.
#pragma once

namespace cmdsvc {

/// "gubs", "rtov": accepted; does nothing and answers nothing.
void ignoreCommand();

/// "dscr", "ipcf": traces the request and answers nothing. The appliance's discovery program
/// receives these by UDP.
void traceDiscoveryCommand();

/// "sgss": starts the collector if it does not run, and answers good.
void restartStatusService();

} // namespace cmdsvc
