// SPDX-License-Identifier: MIT
//
// past.h: what the pages show of the history. They only read its file. If it cannot be read at once
// they do without it: a page is never late because of it, and never fails.
#pragma once

#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "history/reader.h"
#include "history/trend.h"
#include "view/capacity.h"

namespace page {

/// How many days the overview looks back.
inline constexpr std::chrono::days kCourseDays{30};

/// A time that is so many days before another one.
[[nodiscard]] std::time_t daysBefore(std::time_t time, std::chrono::days days);

/// The past of all shares and of the disk, for the overview; empty if there is no history.
struct Past {
    history::Courses courses; ///< of the last 30 days, and a little more to compare them with
    std::optional<double> daysUntilFull; ///< from now on; nothing if the history does not say it
};

/// Reads it, up to a time. Logs why if there is a history that cannot be read.
/// @param disk  as it is at that time. If that is not known, or if its free space differs from the
///              history's last entry by more than 5 % of the disk, nothing is said about when it
///              will be full.
[[nodiscard]] Past readPast(std::time_t now, const std::optional<view::Capacity>& disk);

/// What the history knows of one share.
struct SharePast {
    history::KnownShare share;
    history::Extent extent;
    std::vector<history::Point> points; ///< the oldest first, none of them in the future
};

/// Reads it; nothing if the history does not know the share, or cannot be read.
[[nodiscard]] std::optional<SharePast> readSharePast(std::string_view name, std::time_t since,
                                                     std::time_t now);

/// Which share has had this name before; nothing if none had it.
[[nodiscard]] std::optional<std::string> findNewName(std::string_view formerName);

} // namespace page
