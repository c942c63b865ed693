// SPDX-License-Identifier: MIT
//
// published_status.h: what the last collection of the share status found, and whether one runs now.
#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <vector>

#include "view/share_row.h"

namespace view {

struct PublishedStatus {
    enum class Result {
        kNone,    ///< the status file could not be opened; probably nothing has been published
        kDamaged, ///< the published status cannot be read
        kNoList,  ///< the collection got no list of shares
        kComplete,
    };

    Result result = Result::kNone;
    std::vector<ShareRow> shares;
    std::time_t published = 0; ///< of kNoList and kComplete
    int error = 0;             ///< an errno value, if the status file could not be opened or read

    bool isCollecting = false;
    std::optional<std::time_t> collectingSince; ///< when the mark of a collection was set
    bool isInterrupted = false; ///< there is a mark, but the collector that has set it has ended
    int semaphoreError = 0;     ///< an errno value, if the semaphore exists but could not be read
};

/// Reads the status file (sharestatus/status_format.h) and the semaphore
/// (sharestatus/semaphore_format.h). If the semaphore has a mark, it reads the processes, too: a
/// mark counts as a running collection if a collector runs, or, if that is not visible, for two
/// hours. For a share without a report it checks whether there is a report's file.
///
/// The status file may be rewritten at any time: it is blank for a moment, and one read may get
/// parts of the old status and of the new one. So two reads, one after the other, must be equal.
/// If they differ, or if the status is damaged, it reads again every 20 ms, for at most 200 ms.
[[nodiscard]] PublishedStatus readPublishedStatus();

/// Until when the mark of an interrupted collection prevents others; nothing if there is no such
/// mark. The time may be in the past.
[[nodiscard]] std::optional<std::time_t> blockedUntil(const PublishedStatus& status);

/// When the status file was last written, in nanoseconds; 0 if there is none. It differs even
/// between two statuses that were published in the same second.
[[nodiscard]] std::int64_t lastWritten();

} // namespace view
