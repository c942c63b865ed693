// SPDX-License-Identifier: MIT
#include "page/past.h"

#include <algorithm>
#include <cstdint>
#include <functional>

#include "page/log.h"

namespace page {
namespace {

using history::DatabaseError;
using history::KnownShare;
using history::Reader;

/// Lets a function look into the history. If that fails, what the function has changed so far does
/// not count.
bool look(const std::function<void(const Reader&)>& into)
{
    constexpr std::chrono::milliseconds kPatience{100};
    try {
        into(Reader(history::kFile, kPatience));
        return true;
    } catch (const DatabaseError& error) {
        // Before the first status has been published, that there is none is no news.
        if (error.kind() != DatabaseError::Kind::kNoDatabase) {
            log(std::string("the history cannot be read: ") + error.what());
        }
        return false;
    }
}

/// Whether a disk is still nearly as the history had it last. More than a twentieth of it in at
/// most two days is no part of the trend: much has been copied or deleted at once.
bool isNearly(const view::Capacity& disk, const view::Capacity& last)
{
    constexpr std::uint64_t kTolerance = 20;
    const auto [less, more] = std::minmax(disk.free, last.free);
    return disk.total == last.total && more - less <= disk.total / kTolerance;
}

/// Nothing if the history ended days ago, or if the disk is not as it was then: what has happened
/// since is not in it.
std::optional<double> forecast(const Reader& reader, const view::Capacity& disk, std::time_t now)
{
    constexpr std::chrono::days kWindow{100};
    constexpr std::chrono::days kOldest{2};
    const std::time_t last = reader.extent().last.value_or(0);
    if (last < daysBefore(now, kOldest) || last > now) {
        return std::nullopt;
    }
    const std::vector<history::DiskPoint> points = reader.diskPoints(daysBefore(last, kWindow));
    if (points.empty() || !isNearly(disk, points.back().capacity)) {
        return std::nullopt;
    }
    return history::daysUntilFull(points);
}

void dropFuture(std::vector<history::Point>& points, std::time_t now)
{
    std::erase_if(points, [now](const history::Point& point) { return point.published > now; });
}

} // namespace

std::time_t daysBefore(std::time_t time, std::chrono::days days)
{
    constexpr std::time_t kDay = 86400;
    return time - static_cast<std::time_t>(days.count()) * kDay;
}

Past readPast(std::time_t now, const std::optional<view::Capacity>& disk)
{
    // The entry that is compared with the last one may be two days older, and the last one, too.
    constexpr std::chrono::days kMore{4};
    Past past;
    const bool isRead = look([&](const Reader& reader) {
        past.courses = reader.courses(daysBefore(now, kCourseDays + kMore), kCourseDays);
        past.daysUntilFull = disk ? forecast(reader, *disk, now) : std::nullopt;
    });
    for (auto& [name, points] : past.courses) {
        dropFuture(points, now);
    }
    return isRead ? past : Past();
}

std::optional<SharePast> readSharePast(std::string_view name, std::time_t since, std::time_t now)
{
    std::optional<SharePast> past;
    const bool isRead = look([&](const Reader& reader) {
        if (const std::optional<KnownShare> share = reader.share(name)) {
            past = {*share, reader.extent(now), reader.points(name, since)};
            dropFuture(past->points, now);
        }
    });
    return isRead ? past : std::nullopt;
}

std::optional<std::string> findNewName(std::string_view formerName)
{
    std::optional<std::string> found;
    const bool isRead = look([&](const Reader& reader) {
        for (const KnownShare& share : reader.shares()) {
            if (std::ranges::find(share.formerNames, formerName, &history::FormerName::name) !=
                share.formerNames.end()) {
                found = share.name;
            }
        }
    });
    return isRead ? found : std::nullopt;
}

} // namespace page
