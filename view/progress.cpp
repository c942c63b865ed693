// SPDX-License-Identifier: MIT
#include "view/progress.h"

#include <algorithm>

namespace view {

Progress findProgress(const Collector& collector, const PublishedStatus& status)
{
    Progress progress = {.since = status.collectingSince, .share = collector.share};
    const auto row = std::ranges::find(status.shares, collector.share, &ShareRow::name);
    if (!collector.share.empty() && row != status.shares.end()) {
        progress.place = static_cast<std::size_t>(row - status.shares.begin()) + 1;
        progress.count = status.shares.size();
    }
    return progress;
}

} // namespace view
