// SPDX-License-Identifier: MIT
#pragma once

namespace client {

/// How vokctl ends. Scripts rely on these numbers.
enum ExitCode : int {
    kGood = 0,
    kWrongUsage = 2,
    kNotPermitted = 4,
    kNoData = 6, ///< no data, damaged data, or data older than was asked for
    kFailed = 8, ///< vokctl itself failed: its output could not be written, memory ran out
};

} // namespace client
