// SPDX-License-Identifier: MIT
//
// entry.h: what the history keeps of one published status.
#pragma once

#include <chrono>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "view/capacity.h"
#include "view/published_status.h"
#include "view/wording.h"

namespace history {

/// Which folder it is, whatever its name: the number that the file system gave it, and when it was
/// made, in nanoseconds. A number may be given anew after a folder's removal; the two together are
/// not.
struct Folder {
    std::int64_t number = 0;
    std::int64_t made = 0;

    bool operator==(const Folder&) const = default;
};

/// One share in a published status.
struct ShareEntry {
    std::string name;                ///< any bytes
    std::optional<view::Space> used; ///< nothing if it was not measured
    std::optional<int> backupState;  ///< 0 to 9
    std::optional<std::chrono::sys_days> backupDay;
    std::optional<Folder> folder; ///< nothing if it is not known
};

struct Entry {
    std::time_t published = 0;
    bool hasList = true; ///< false if the collection got no list of shares
    std::optional<view::Capacity> capacity;
    std::vector<ShareEntry> shares;
};

/// Which folder a path leads to; nothing if there is none, or if its file system does not keep when
/// a folder was made. Links are not followed.
[[nodiscard]] std::optional<Folder> identify(const std::string& path);

/// The entry of a status that could be read (kComplete or kNoList), with the folders of its shares
/// as they are now.
/// @param folder  where the shares have theirs
[[nodiscard]] Entry makeEntry(const view::PublishedStatus& status,
                              const std::optional<view::Capacity>& capacity,
                              const std::string& folder = view::kShareFolder);

} // namespace history
