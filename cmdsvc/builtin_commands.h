// SPDX-License-Identifier: MIT
//
// builtin_commands.h: commands that need no handler of their own.
#pragma once

namespace cmdsvc {

/// "gubs", "rtov": accepted, and nothing is done or answered.
void ignoreCommand();

/// "dscr", "ipcf": meant for the appliance's discovery service, which hears them by UDP; here they
/// are traced and not answered.
void traceDiscoveryCommand();

/// "sgss": starts the "pelstatus" service if it does not run, and answers good.
void restartStatusService();

} // namespace cmdsvc
