// SPDX-License-Identifier: MIT
#include "history/entry.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace history {

std::optional<Folder> identify(const std::string& path)
{
    constexpr unsigned kWanted = STATX_INO | STATX_BTIME | STATX_TYPE;
    constexpr std::int64_t kNanoseconds = 1000000000;
    struct statx status = {};
    const int result = ::statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, kWanted, &status);
    if (result != 0 || (status.stx_mask & kWanted) != kWanted || !S_ISDIR(status.stx_mode)) {
        return std::nullopt;
    }
    return Folder{.number = static_cast<std::int64_t>(status.stx_ino),
                  .made = status.stx_btime.tv_sec * kNanoseconds + status.stx_btime.tv_nsec};
}

Entry makeEntry(const view::PublishedStatus& status, const std::optional<view::Capacity>& capacity,
                const std::string& folder)
{
    Entry entry{.published = status.published,
                .hasList = status.result == view::PublishedStatus::Result::kComplete,
                .capacity = capacity,
                .shares = {}};
    for (const view::ShareRow& share : status.shares) {
        entry.shares.push_back({.name = share.name,
                                .used = share.used,
                                .backupState = share.backupState,
                                .backupDay = share.backupDay,
                                .folder = identify(folder + "/" + share.name)});
    }
    return entry;
}

} // namespace history
