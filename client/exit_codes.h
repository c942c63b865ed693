// SPDX-License-Identifier: MIT
#pragma once

namespace client {

/// How vokctl ends. Scripts rely on these numbers.
enum ExitCode : int {
    kGood = 0,
    kRefused = 1, ///< the appliance has answered with an error, or "doctor" has found one
    kWrongUsage = 2,
    kUnreachable = 3, ///< nobody listens at the service's socket
    kNotPermitted = 4,
    kNoAnswer = 5,         ///< the answer did not come in time
    kNoData = 6,           ///< no data, damaged data, or data older than was asked for
    kUnreadableAnswer = 7, ///< an answer came that makes no sense
    kFailed = 8, ///< vokctl itself failed: its output could not be written, memory ran out
};

} // namespace client
