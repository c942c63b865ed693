// SPDX-License-Identifier: MIT
#include "history/trend.h"

#include <algorithm>
#include <cmath>

#include "sharestatus/status_format.h"
#include "text/translation.h"

namespace history {
namespace {

constexpr std::time_t kDay = 86400;

// ---- A share's change -------------------------------------------------------------------------

std::optional<Point> lastMeasured(const std::vector<Point>& points, std::time_t latest)
{
    const auto found = std::find_if(points.rbegin(), points.rend(), [&](const Point& point) {
        return point.used.has_value() && point.published <= latest;
    });
    return (found != points.rend()) ? std::optional(*found) : std::nullopt;
}

std::int64_t widthOf(const view::Space& space)
{
    return std::int64_t{sharestatus::findUnit(space.unit)->kibibytes} - 1;
}

Change changeBetween(const view::Space& base, const view::Space& last)
{
    const auto before = static_cast<std::int64_t>(base.kibibytes());
    const auto after = static_cast<std::int64_t>(last.kibibytes());
    const bool hasGrown = after > before + widthOf(base);
    const bool hasShrunk = after + widthOf(last) < before;
    return {.kibibytes = after - before,
            .uncertainty = std::max(widthOf(last), widthOf(base)),
            .isCertain = hasGrown || hasShrunk};
}

/// @param lastAt  finds the last measured entry at a time or before
template <class LastAt>
std::optional<Change> changeUpTo(std::time_t latest, std::chrono::days days, const LastAt& lastAt)
{
    constexpr std::time_t kTolerance = 2 * kDay;
    const std::optional<Point> last = lastAt(latest);
    if (!last) {
        return std::nullopt;
    }
    const std::time_t then = last->published - static_cast<std::time_t>(days.count()) * kDay;
    const std::optional<Point> base = lastAt(then);
    if (!base || then - base->published > kTolerance) {
        return std::nullopt;
    }
    return changeBetween(*base->used, *last->used);
}

// ---- The disk's trend -------------------------------------------------------------------------

/// The free space of one day, in KiB, at the mean of its entries' times.
struct Sample {
    double day;
    double free;
    double count;
};

/// A day counts once, however many entries it has.
std::vector<Sample> averageDays(const std::vector<DiskPoint>& points, std::time_t since)
{
    std::vector<Sample> samples;
    std::time_t current = -1;
    for (const DiskPoint& point : points) {
        if (point.published < since || point.capacity.total != points.back().capacity.total) {
            samples.clear();
            current = -1;
            continue;
        }
        const std::time_t day = point.published / kDay;
        if (day != current) {
            samples.push_back({0, 0, 0});
            current = day;
        }
        samples.back().day += static_cast<double>(point.published) / kDay;
        samples.back().free += static_cast<double>(point.capacity.free);
        samples.back().count += 1;
    }
    for (Sample& sample : samples) {
        sample.day /= sample.count;
        sample.free /= sample.count;
    }
    return samples;
}

struct Line {
    double slope; ///< KiB a day
    double fit;   ///< which part of the variation it explains: 0 to 1
};

/// The straight line with the least squares.
Line fitLine(const std::vector<Sample>& samples)
{
    const auto count = static_cast<double>(samples.size());
    double day = 0;
    double free = 0;
    for (const Sample& sample : samples) {
        day += sample.day / count;
        free += sample.free / count;
    }
    double dayDay = 0;
    double dayFree = 0;
    double freeFree = 0;
    for (const Sample& sample : samples) {
        dayDay += (sample.day - day) * (sample.day - day);
        dayFree += (sample.day - day) * (sample.free - free);
        freeFree += (sample.free - free) * (sample.free - free);
    }
    if (freeFree <= 0) {
        return {0, 0};
    }
    return {dayFree / dayDay, dayFree * dayFree / (dayDay * freeFree)};
}

std::uint64_t rounded(double number)
{
    return static_cast<std::uint64_t>(std::llround(number));
}

} // namespace

std::optional<Change> changeOver(const std::vector<Point>& points, std::chrono::days days)
{
    const std::time_t latest = points.empty() ? 0 : points.back().published;
    return changeUpTo(latest, days, [&](std::time_t time) { return lastMeasured(points, time); });
}

std::optional<Change> changeOver(const Reader& reader, std::string_view name,
                                 std::chrono::days days, std::time_t now)
{
    const Extent extent = reader.extent(now);
    const std::optional<KnownShare> share = reader.share(name);
    if (!share || fateOf(*share, extent, 0) == Fate::kVanished) {
        return std::nullopt;
    }
    return changeUpTo(share->last, days,
                      [&](std::time_t time) { return reader.lastMeasured(name, time); });
}

std::chrono::days knownDays(const std::vector<Point>& points, std::chrono::days most)
{
    const auto isMeasured = [](const Point& point) { return point.used.has_value(); };
    const auto first = std::find_if(points.begin(), points.end(), isMeasured);
    const auto last = std::find_if(points.rbegin(), points.rend(), isMeasured);
    if (first == points.end()) {
        return std::chrono::days(0);
    }
    const std::chrono::seconds span(last->published - first->published);
    return std::min(most, std::chrono::floor<std::chrono::days>(span));
}

std::string formatChange(const Change& change)
{
    const auto size = static_cast<std::uint64_t>(std::abs(change.kibibytes));
    if (!change.isCertain) {
        return text::tr("no change");
    }
    return (change.kibibytes > 0 ? "+" : "-") + view::formatKibibytes(size);
}

std::optional<double> daysUntilFull(const std::vector<DiskPoint>& points)
{
    constexpr std::time_t kWindow = 90 * kDay;
    constexpr double kLeastSpan = 14;
    constexpr std::size_t kLeastDays = 8;
    constexpr double kLeastFit = 0.8;
    constexpr double kFarthest = 3 * 365;
    if (points.empty()) {
        return std::nullopt;
    }
    const std::vector<Sample> samples = averageDays(points, points.back().published - kWindow);
    if (samples.size() < kLeastDays || samples.back().day - samples.front().day < kLeastSpan) {
        return std::nullopt;
    }
    const Line line = fitLine(samples);
    if (line.slope >= 0 || line.fit < kLeastFit) {
        return std::nullopt;
    }
    const double days = static_cast<double>(points.back().capacity.free) / -line.slope;
    return (days <= kFarthest) ? std::optional(days) : std::nullopt;
}

std::string formatForecast(double days)
{
    constexpr double kMostDays = 13.5;
    constexpr double kMostWeeks = 60;
    constexpr double kMonth = 365.25 / 12;
    const auto counted = [](const char* words, std::uint64_t count) {
        return text::fill(words, {std::to_string(count)});
    };
    if (days < kMostDays) {
        const std::uint64_t count = std::max<std::uint64_t>(rounded(days), 1);
        // Translators: ends the sentence "If it goes on filling like this, the disk is {}."
        return counted(text::trn("full in about {} day", "full in about {} days", count), count);
    }
    if (days < kMostWeeks) {
        const std::uint64_t count = rounded(days / 7);
        return counted(text::trn("full in about {} week", "full in about {} weeks", count), count);
    }
    const std::uint64_t count = rounded(days / kMonth);
    return counted(text::trn("full in about {} month", "full in about {} months", count), count);
}

Fate fateOf(const KnownShare& share, const Extent& extent, std::time_t since)
{
    if (extent.lastList && share.last < *extent.lastList) {
        return Fate::kVanished;
    }
    if (!share.formerNames.empty() && share.formerNames.back().renamed > since) {
        return Fate::kRenamed;
    }
    const bool isNew = extent.first && share.first > *extent.first && share.first > since;
    return isNew ? Fate::kNew : Fate::kKept;
}

} // namespace history
