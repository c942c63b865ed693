// SPDX-License-Identifier: MIT
//
// collector.h: whether a collection runs, and how far it is, by the processes that run. The
// collector itself is asked nothing.
#pragma once

#include <string>

#include "view/processes.h"

namespace view {

struct Collector {
    enum class State {
        kRuns,
        kGone,
        kUnknown, ///< other users' processes cannot be seen
    };

    State state = State::kUnknown;
    std::string share = {}; ///< the one that is being measured, if any
};

[[nodiscard]] Collector findCollector(const Processes& processes);

} // namespace view
