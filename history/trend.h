// SPDX-License-Identifier: MIT
//
// trend.h: what the entries say of the past and the time to come. Values in, values out.
#pragma once

#include <chrono>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "history/reader.h"

namespace history {

/// How much more a share uses than before, in KiB; less than 0 if it uses less: the difference of
/// two published sizes. Sizes are cut off to whole units, so the true change is within
/// "uncertainty" KiB of it.
struct Change {
    std::int64_t kibibytes = 0;
    std::int64_t uncertainty = 0;
    bool isCertain = false; ///< the sizes show that it has grown, or that it has shrunk
};

/// The change up to a share's last measured entry, from the last one that is so many days older or
/// up to two days more. Nothing if there is no such entry.
/// @param points  the oldest first
[[nodiscard]] std::optional<Change> changeOver(const std::vector<Point>& points,
                                               std::chrono::days days = std::chrono::days(30));

/// The same of a share of the history, by its name. Nothing of one that has vanished by a time.
[[nodiscard]] std::optional<Change> changeOver(const Reader& reader, std::string_view name,
                                               std::chrono::days days = std::chrono::days(30),
                                               std::time_t now = kAnyTime);

/// Over how many days the change up to the last measured entry can be told: those since the first
/// measured one, at most those given. 0 if there are not two.
/// @param points  the oldest first
[[nodiscard]] std::chrono::days knownDays(const std::vector<Point>& points, std::chrono::days most);

/// "+32 GB", "-604 KB", "no change"; the last if the sizes do not show that there is one: 20 MB and
/// 1 GB do, though the second may be up to 1 GB more, but 1010 KB and 1 MB do not.
[[nodiscard]] std::string formatChange(const Change& change);

/// When the file system will be full, if it goes on as in the last 90 days at most. Entries before
/// the last change of its size do not count. Nothing if they span less than 14 days or come from
/// fewer than 8, if the free space does not fall, if a straight line explains less than 80 % of how
/// it varies, or if it would take more than three years.
/// @param points  the oldest first
/// @return the days from the last entry on
[[nodiscard]] std::optional<double> daysUntilFull(const std::vector<DiskPoint>& points);

/// "full in about 5 months"
[[nodiscard]] std::string formatForecast(double days);

/// What happened to a share since a time.
enum class Fate {
    kKept,
    kNew,      ///< the history is older than that time, and the share is younger
    kRenamed,  ///< it had another name at that time
    kVanished, ///< the last list of shares does not have it
};

[[nodiscard]] Fate fateOf(const KnownShare& share, const Extent& extent, std::time_t since);

} // namespace history
