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
        kNone,    ///< the status file could not be opened; nothing has been published, most likely
        kDamaged, ///< what has been published cannot be read
        kNoList,  ///< the collection got no list of shares
        kComplete,
    };

    Result result = Result::kNone;
    std::vector<ShareRow> shares;
    std::time_t published = 0; ///< of kNoList and kComplete
    int error = 0;             ///< an errno value, if the status file could not be opened or read

    bool isCollecting = false;
    std::optional<std::time_t> collectingSince; ///< when the mark of a collection was set
    bool isInterrupted = false; ///< there is a mark, but the collector that has set it is gone
    int semaphoreError = 0;     ///< an errno value, if the semaphore is there but could not be read
};

/// Reads the status file (sharestatus/status_format.h) and the semaphore
/// (sharestatus/semaphore_format.h). If the semaphore has a mark it looks at the processes, too: a
/// mark counts as a running collection if a collector runs, or, where that cannot be seen, for two
/// hours. Of a share without a report it looks whether there is the file of one.
///
/// The status file is rewritten in place at any time: it is blank for a moment, and one read may
/// get some of the old status and some of the new. So two reads right after each other must agree.
/// If they do not, or if what they see is damaged, it reads again every 20 ms, for at most 200 ms.
[[nodiscard]] PublishedStatus readPublishedStatus();

/// Until when the mark of an interrupted collection keeps others from starting; nothing if there is
/// no such mark. The time may be over.
[[nodiscard]] std::optional<std::time_t> blockedUntil(const PublishedStatus& status);

/// When the status file was last written, in nanoseconds; 0 if there is none. Two statuses that
/// were published in one second differ in it.
[[nodiscard]] std::int64_t lastWritten();

} // namespace view
