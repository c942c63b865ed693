// SPDX-License-Identifier: MIT
#include "history/trend.h"

#include <cmath>

#include "tests/history/entries.h"

namespace {

using entries::kDay;
using entries::kHour;
using entries::kMonday;
using history::Change;
using history::changeOver;
using history::daysUntilFull;
using history::DiskPoint;
using history::Extent;
using history::Fate;
using history::fateOf;
using history::formatChange;
using history::formatForecast;
using history::KnownShare;
using history::Point;

// ---- Change -------------------------------------------------------------------------------------

Point point(std::time_t day, std::uint16_t used, char unit = 'M')
{
    return {.published = kMonday + day * kDay,
            .used = view::Space{used, unit},
            .backupState = {},
            .backupDay = {}};
}

Point gap(std::time_t day)
{
    return {.published = kMonday + day * kDay, .used = {}, .backupState = {}, .backupDay = {}};
}

/// "CHANGE within UNCERTAINTY", "unknown"
std::string changeOf(const std::vector<Point>& points)
{
    const std::optional<Change> change = changeOver(points);
    return change ? std::to_string(change->kibibytes) + " within " +
                        std::to_string(change->uncertainty)
                  : "unknown";
}

/// The change in 30 days from one size to another.
std::string changeInWords(const view::Space& before, const view::Space& after)
{
    return formatChange(
        *changeOver({point(0, before.value, before.unit), point(30, after.value, after.unit)}));
}

TEST(HistoryChange, isFromThirtyDaysBefore)
{
    EXPECT_EQ(changeOf({point(-1, 1), point(0, 10), point(1, 20), point(30, 50)}),
              "40000 within 999");
    EXPECT_EQ(changeOf({point(0, 50), point(30, 10)}), "-40000 within 999");
    EXPECT_EQ(changeOf({point(0, 1000, 'K'), point(30, 2, 'G')}), "1999000 within 999999");
    EXPECT_EQ(changeOf({point(0, 5, 'K'), point(30, 5, 'K')}), "0 within 0");
}

TEST(HistoryChange, isNotKnownWithoutAnEntryOfThatTime)
{
    EXPECT_EQ(changeOf({}), "unknown");
    EXPECT_EQ(changeOf({point(1, 10), point(30, 50)}), "unknown");
    EXPECT_EQ(changeOf({point(-2, 10), point(30, 50)}), "40000 within 999");
    EXPECT_EQ(changeOf({point(-3, 10), point(30, 50)}), "unknown");
    EXPECT_EQ(changeOf({gap(0), gap(30)}), "unknown");
}

TEST(HistoryChange, passesOverWhatWasNotMeasured)
{
    EXPECT_EQ(changeOf({point(-1, 10), gap(0), point(29, 50), gap(30)}), "40000 within 999");
}

TEST(HistoryChange, isKnownForTheDaysBetweenMeasuredEntries)
{
    const auto days = [](const std::vector<Point>& points) {
        return history::knownDays(points, std::chrono::days(30)).count();
    };
    EXPECT_EQ(days({}), 0);
    EXPECT_EQ(days({gap(0), gap(9)}), 0);
    EXPECT_EQ(days({point(5, 1)}), 0);
    EXPECT_EQ(days({gap(0), point(1, 1), point(4, 1), point(8, 2), gap(9)}), 7);
    EXPECT_EQ(days({point(0, 1), point(30, 1)}), 30);
    EXPECT_EQ(days({point(0, 1), point(32, 1)}), 30);
}

class StoredHistoryChange : public root::UntracedTest {};

TEST_F(StoredHistoryChange, isThatOfTheEntries)
{
    {
        history::Store store(entries::kFile);
        for (const std::time_t day : {-1, 0, 29, 30}) {
            auto share = entries::share("Media", static_cast<std::uint16_t>(40 + day));
            share.used = (day == 0 || day == 30) ? std::nullopt : share.used;
            (void)store.remember(entries::entry(kMonday + day * kDay, {share}), kMonday);
        }
    }
    const history::Reader reader(entries::kFile);
    EXPECT_EQ(changeOver(reader, "Media")->kibibytes, 30000) << "from day -1 to day 29";
    EXPECT_EQ(changeOver(reader, "Media")->uncertainty, 999);
    EXPECT_FALSE(changeOver(reader, "Media", std::chrono::days(20)));
    EXPECT_FALSE(changeOver(reader, "Music"));
    (void)history::Store(entries::kFile).remember(entries::bare(kMonday + 31 * kDay), kMonday);
    EXPECT_FALSE(changeOver(reader, "Media")) << "it has vanished";
}

TEST(HistoryChange, saysNoMoreThanSizesCanTell)
{
    EXPECT_EQ(changeInWords({3, 'G'}, {35, 'G'}), "+32 GB");
    EXPECT_EQ(changeInWords({3, 'G'}, {4, 'G'}), "+1.0 GB");
    EXPECT_EQ(changeInWords({3, 'G'}, {3, 'G'}), "no change");
    EXPECT_EQ(changeInWords({605, 'K'}, {1, 'K'}), "-604 KB");
    EXPECT_EQ(changeInWords({5, 'K'}, {6, 'K'}), "+1 KB");
    EXPECT_EQ(changeInWords({5, 'K'}, {5, 'K'}), "no change");
}

TEST(HistoryChange, isShownOfSizesInDifferentUnits)
{
    EXPECT_EQ(changeInWords({20, 'M'}, {1, 'G'}), "+980 MB");
    EXPECT_EQ(changeInWords({1, 'G'}, {20, 'M'}), "-980 MB");
    EXPECT_EQ(changeInWords({999, 'M'}, {1, 'G'}), "+1.0 MB") << "they touch, but do not overlap";
    EXPECT_EQ(changeInWords({1, 'G'}, {999, 'M'}), "-1.0 MB");
    EXPECT_EQ(changeInWords({999, 'K'}, {1, 'M'}), "+1 KB");
    EXPECT_EQ(changeInWords({1, 'M'}, {999, 'K'}), "-1 KB");
    EXPECT_EQ(changeInWords({1000, 'K'}, {1, 'M'}), "no change") << "1 MB may be 1000 KB";
    EXPECT_EQ(changeInWords({1, 'M'}, {1000, 'K'}), "no change");
    EXPECT_EQ(changeInWords({1023, 'K'}, {1, 'M'}), "no change");
    EXPECT_EQ(changeInWords({1, 'M'}, {1023, 'K'}), "no change");
}

// ---- Forecast -----------------------------------------------------------------------------------

constexpr std::uint64_t kTotal = 1000000;

DiskPoint disk(std::time_t seconds, double free, std::uint64_t total = kTotal)
{
    const auto kibibytes = static_cast<std::uint64_t>(free);
    return {kMonday + seconds, {total, total - kibibytes, kibibytes}};
}

/// Hourly entries of a disk that loses so much each day.
std::vector<DiskPoint> falling(int days, double free, double daily)
{
    std::vector<DiskPoint> points;
    for (std::time_t hour = 0; hour <= std::time_t{days} * 24; ++hour) {
        points.push_back(disk(hour * kHour, free - daily * static_cast<double>(hour) / 24));
    }
    return points;
}

/// The forecast in whole days; -1 if there is none.
long forecast(const std::vector<DiskPoint>& points)
{
    const std::optional<double> days = daysUntilFull(points);
    return days ? std::lround(*days) : -1;
}

TEST(HistoryForecast, goesOnAsBefore)
{
    EXPECT_EQ(forecast(falling(30, 180000, 1000)), 150);
    EXPECT_EQ(forecast(falling(30, 31000, 1000)), 1);
    EXPECT_EQ(forecast(falling(30, 30000, 1000)), 0) << "it is full";
}

TEST(HistoryForecast, saysNothingBeforeTwoWeeks)
{
    EXPECT_EQ(forecast({}), -1);
    EXPECT_EQ(forecast({disk(0, 5)}), -1);
    EXPECT_EQ(forecast(falling(13, 180000, 1000)), -1);
    EXPECT_EQ(forecast(falling(15, 180000, 1000)), 165);
}

TEST(HistoryForecast, saysNothingOfFewDays)
{
    std::vector<DiskPoint> points;
    for (std::time_t day = 0; day < 7; ++day) {
        points.push_back(disk(day * 3 * kDay, 100000 - 1000.0 * static_cast<double>(day)));
    }
    EXPECT_EQ(forecast(points), -1);
    points.push_back(disk(21 * kDay, 93000));
    EXPECT_EQ(forecast(points), 279);
}

TEST(HistoryForecast, saysNothingIfTheFreeSpaceGrowsOrStays)
{
    EXPECT_EQ(forecast(falling(30, 100000, -1000)), -1);
    EXPECT_EQ(forecast(falling(30, 100000, 0)), -1);
}

TEST(HistoryForecast, saysNothingIfTheFitIsPoor)
{
    std::vector<DiskPoint> points;
    for (std::time_t day = 0; day <= 30; ++day) {
        const double swing = (day % 2 == 0) ? 30000 : -30000;
        points.push_back(disk(day * kDay, 200000 - 1000.0 * static_cast<double>(day) + swing));
    }
    EXPECT_EQ(forecast(points), -1);
}

TEST(HistoryForecast, saysNothingOfMoreThanThreeYears)
{
    EXPECT_EQ(forecast(falling(30, 1090030, 1000)), 1060);
    EXPECT_EQ(forecast(falling(30, 1124900, 1000)), 1095);
    EXPECT_EQ(forecast(falling(30, 1126030, 1000)), -1);
}

TEST(HistoryForecast, countsADayOnceHoweverManyEntriesItHas)
{
    // 20 days fall by 1,000 each, of which the last has a thousand entries.
    std::vector<DiskPoint> points;
    for (std::time_t day = 0; day < 20; ++day) {
        points.push_back(disk(day * kDay + kDay / 2, 100000 - 1000.0 * static_cast<double>(day)));
    }
    const long once = forecast(points);
    EXPECT_EQ(once, 81);
    for (std::time_t i = 1; i <= 1000; ++i) {
        points.push_back(disk(19 * kDay + kDay / 2 + i, 81000));
    }
    EXPECT_EQ(forecast(points), once);
}

TEST(HistoryForecast, countsOnlyTheLastNinetyDays)
{
    std::vector<DiskPoint> points = falling(100, 500000, 4000);
    const std::vector<DiskPoint> slower = falling(90, 100000, 500);
    for (const DiskPoint& each : slower) {
        DiskPoint later = each;
        later.published += 100 * kDay + kHour;
        points.push_back(later);
    }
    EXPECT_EQ(forecast(points), 110);
}

TEST(HistoryForecast, beginsAfterTheLastChangeOfTheDisk)
{
    std::vector<DiskPoint> points = falling(60, 180000, 1000);
    for (std::time_t day = 61; day <= 85; ++day) {
        points.push_back(disk(day * kDay, 2000000 - 10000.0 * static_cast<double>(day), 3000000));
    }
    EXPECT_EQ(forecast(points), 115);
    points.resize(points.size() - 12);
    EXPECT_EQ(forecast(points), -1) << "two weeks are not over since";
}

TEST(HistoryForecast, isSaidInRoundWords)
{
    EXPECT_EQ(formatForecast(0), "full in about 1 day");
    EXPECT_EQ(formatForecast(13.4), "full in about 13 days");
    EXPECT_EQ(formatForecast(13.5), "full in about 2 weeks");
    EXPECT_EQ(formatForecast(59), "full in about 8 weeks");
    EXPECT_EQ(formatForecast(60), "full in about 2 months");
    EXPECT_EQ(formatForecast(150), "full in about 5 months");
    EXPECT_EQ(formatForecast(1095), "full in about 36 months");
}

// ---- Fate ---------------------------------------------------------------------------------------

TEST(HistoryFate, tellsNewRenamedAndVanishedSharesApart)
{
    const Extent extent{.first = 0, .last = 900, .lastList = 900, .begunAnew = {}};
    const KnownShare kept{.name = "a", .first = 0, .last = 900, .formerNames = {}};
    EXPECT_EQ(fateOf(kept, extent, 500), Fate::kKept);
    KnownShare share = kept;
    share.first = 501;
    EXPECT_EQ(fateOf(share, extent, 500), Fate::kNew);
    share.first = 500;
    EXPECT_EQ(fateOf(share, extent, 500), Fate::kKept);
    share = kept;
    share.formerNames = {{"b", 100}, {"c", 501}};
    EXPECT_EQ(fateOf(share, extent, 500), Fate::kRenamed);
    share.formerNames.pop_back();
    EXPECT_EQ(fateOf(share, extent, 500), Fate::kKept);
    share.last = 899;
    EXPECT_EQ(fateOf(share, extent, 50), Fate::kVanished);
}

TEST(HistoryFate, callsNothingNewAtTheHistorysBeginning)
{
    const Extent extent{.first = 600, .last = 900, .lastList = 900, .begunAnew = {}};
    const KnownShare share{.name = "a", .first = 600, .last = 900, .formerNames = {}};
    EXPECT_EQ(fateOf(share, extent, 500), Fate::kKept);
}

TEST(HistoryFate, callsNothingVanishedIfTheLastStatusHasNoList)
{
    const Extent extent{.first = 0, .last = 901, .lastList = 900, .begunAnew = {}};
    const KnownShare share{.name = "a", .first = 0, .last = 900, .formerNames = {}};
    EXPECT_EQ(fateOf(share, extent, 500), Fate::kKept);
}

} // namespace
