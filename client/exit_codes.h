// SPDX-License-Identifier: MIT
#pragma once

namespace client {

/// The exit codes of vokctl. Scripts rely on these numbers.
enum ExitCode : int {
    kGood = 0,
    kRefused = 1, ///< the appliance has answered with an error, or "doctor" has found one
    kWrongUsage = 2,
    kUnreachable = 3, ///< nothing listens on the service's socket
    kNotPermitted = 4,
    kNoAnswer = 5,         ///< the answer did not come in time
    kNoData = 6,           ///< no data, damaged data, or data older than --max-age
    kUnreadableAnswer = 7, ///< the answer is not one of the command
    kFailed = 8, ///< vokctl itself failed: its output could not be written, memory ran out
};

} // namespace client
