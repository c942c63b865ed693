// SPDX-License-Identifier: MIT
//
// judgement.h: whether all is well with the appliance's shares and disks, and if not, what to do.
// The one place that says what is how bad; thresholds and the meaning of backup states come from
// the configuration.
#pragma once

#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "config/configuration.h"
#include "view/capacity.h"
#include "view/disk_arrays.h"
#include "view/published_status.h"

namespace view {

/// How bad something is; what is worse stands further down.
enum class Level { kFine, kWarning, kCritical };

/// "fine", "warning", "critical"
[[nodiscard]] const char* wordOf(Level level);

struct Finding {
    Level level;
    const char* kind;                     ///< one word for programs, such as "no-backup"
    std::vector<std::string> shares = {}; ///< those that it is about, if any: any bytes
    std::string sentence; ///< for people, with what to do; names stand in it as they are
};

/// All that is judged.
struct Situation {
    PublishedStatus status;
    std::optional<Capacity> capacity;               ///< nothing if it is not known
    std::optional<std::vector<std::string>> listed; ///< the shares that there are, if known
    std::vector<DiskArray> arrays;                  ///< none if the disks form none
    std::time_t now = 0;
};

/// Looks at all of it; the status may have been read already.
[[nodiscard]] Situation readSituation(PublishedStatus status = readPublishedStatus());

/// What there is to say, the worst first; nothing if all is well.
[[nodiscard]] std::vector<Finding> judge(const Situation& situation,
                                         const config::Configuration& configuration);

/// The worst level of all; kFine if there is none.
[[nodiscard]] Level worstOf(const std::vector<Finding>& findings);

/// What there is to say of one share's last backup. Whether a state is good the configuration says.
enum class Backup {
    kNone,        ///< there never was one
    kUnreadable,  ///< something was reported that cannot be read
    kNewer,       ///< one was reported after the collection
    kFailed,      ///< its state is one of those that have failed
    kInFuture,    ///< its day is still to come, so it says nothing of its age
    kOld,         ///< it is older than is allowed
    kUnexplained, ///< it is recent; nobody has said what its state means
    kGood,        ///< it is recent, and its state is good
};

[[nodiscard]] Backup judgeBackup(const ShareRow& share, const config::Configuration& configuration,
                                 std::chrono::sys_days today);

/// A state as its digit and the configuration's word for it: "2 (disk full)"; "2" without a word.
[[nodiscard]] std::string formatState(int state, const config::Configuration& configuration);

} // namespace view
