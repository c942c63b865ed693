// SPDX-License-Identifier: MIT
//
// collector.h: finds out from the running processes whether a collection runs, and how far it is.
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
    std::string share = {}; ///< the share that is being measured, if any
};

[[nodiscard]] Collector findCollector(const Processes& processes);

} // namespace view
