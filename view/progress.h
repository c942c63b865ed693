// SPDX-License-Identifier: MIT
//
// progress.h: how far the collection is that runs now.
#pragma once

#include <cstddef>
#include <ctime>
#include <optional>
#include <string>

#include "view/collector.h"
#include "view/published_status.h"

namespace view {

struct Progress {
    std::optional<std::time_t> since = {}; ///< when it began, if that is known
    std::string share = {};                ///< the one that is being measured; empty if unknown
    std::size_t place = 0;                 ///< of that share, from 1; 0 if unknown
    std::size_t count = 0;                 ///< of all shares; 0 if unknown
};

/// Shares are measured in the order of the last status, so a share's place there is how far the
/// collection is. A share that is new since has no place.
[[nodiscard]] Progress findProgress(const Collector& collector, const PublishedStatus& status);

} // namespace view
