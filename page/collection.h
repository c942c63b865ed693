// SPDX-License-Identifier: MIT
//
// collection.h: what the last collection of the share status found.
#pragma once

#include <chrono>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "page/wording.h"

namespace page {

/// One share. What could not be measured, was never reported or makes no sense is absent.
struct Share {
    std::string name; ///< as it stands on the disk: any bytes
    std::optional<Space> used;
    std::optional<int> backupState; ///< as the backup client reported it
    std::optional<std::chrono::sys_days> backupDay;
};

struct Collection {
    enum class Result {
        kNone,    ///< nothing has been published
        kDamaged, ///< what has been published cannot be read
        kNoList,  ///< the collection got no list of shares
        kComplete,
    };

    Result result = Result::kNone;
    std::vector<Share> shares;
    std::time_t published = 0; ///< of kNoList and kComplete
    bool isRunning = false;    ///< whether a collection runs now
};

/// Reads the status file and the semaphore. For a moment while it is rewritten the status file is
/// damaged; that is waited for.
[[nodiscard]] Collection readCollection();

/// Takes the shares out of a payload; nothing where it is no table of records.
[[nodiscard]] std::optional<std::vector<Share>> readShares(std::string_view payload);

/// How much the backup of a share can be relied on.
enum class BackupLevel { kRecent, kAgeing, kOld, kNone };

[[nodiscard]] BackupLevel judgeBackup(const Share& share, std::chrono::sys_days today);

/// The space that all shares use together, in KiB.
[[nodiscard]] std::uint64_t totalUsed(const std::vector<Share>& shares);

} // namespace page
