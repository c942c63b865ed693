// SPDX-License-Identifier: MIT
#include "history/reader.h"

#include <array>

#include "history/trend.h"
#include "tests/history/entries.h"

namespace {

using entries::entry;
using entries::kDay;
using entries::kFile;
using entries::kMonday;
using entries::share;
using history::Extent;
using history::Reader;
using history::Store;

class HistoryReader : public root::UntracedTest {
  protected:
    static void remember(const history::Entry& what)
    {
        EXPECT_EQ(Store(kFile).remember(what, kMonday), history::Remembered::kNew);
    }
};

TEST_F(HistoryReader, saysThatThereIsNoHistory)
{
    const auto failure = entries::failureOf([] { const Reader reader(kFile); });
    EXPECT_EQ(failure->kind(), history::DatabaseError::Kind::kNoDatabase);
    { // Killed before the first entry.
        const Store store(kFile);
    }
    root::writeFile(kFile, "");
    const auto empty = entries::failureOf([] { const Reader reader(kFile); });
    EXPECT_EQ(empty->kind(), history::DatabaseError::Kind::kNoDatabase);
}

TEST_F(HistoryReader, readsOnlySinceATime)
{
    for (const std::time_t time : {0, 1, 2}) {
        remember(entry(kMonday + time, {share("Media", 5)}));
    }
    const Reader reader(kFile);
    ASSERT_EQ(reader.points("Media", kMonday + 1).size(), 2U);
    EXPECT_EQ(reader.points("Media", kMonday + 1)[0].published, kMonday + 1);
    ASSERT_EQ(reader.diskPoints(kMonday + 2).size(), 1U);
    EXPECT_EQ(reader.diskPoints(kMonday + 2)[0].published, kMonday + 2);
    EXPECT_TRUE(reader.points("media", 0).empty());
}

TEST_F(HistoryReader, findsAShareByItsName)
{
    remember(entry(kMonday, {share("Media", 5), share("Music", 5)}));
    remember(entry(kMonday + 9, {share("Music", 5)}));
    const Reader reader(kFile);
    EXPECT_EQ(reader.share("Media")->last, kMonday);
    EXPECT_EQ(reader.share("Music")->name, "Music");
    EXPECT_EQ(reader.share("Music")->last, kMonday + 9);
    EXPECT_FALSE(reader.share("None"));
}

TEST_F(HistoryReader, knowsItsExtent)
{
    remember(entry(kMonday, {}));
    history::Entry noList = entry(kMonday + 5, {});
    noList.hasList = false;
    remember(noList);
    const Extent extent = Reader(kFile).extent();
    EXPECT_EQ(extent.first, kMonday);
    EXPECT_EQ(extent.last, kMonday + 5);
    EXPECT_EQ(extent.lastList, kMonday);
    EXPECT_EQ(extent.begunAnew, std::nullopt);
}

TEST_F(HistoryReader, leavesOutEntriesOfTheFuture)
{
    remember(entry(kMonday, {share("Media", 5), share("New", 5)}));
    remember(entry(kMonday + 10 * 365 * kDay, {share("Media", 5)}));
    const Reader reader(kFile);
    const Extent extent = reader.extent(kMonday);
    EXPECT_EQ(extent.first, kMonday);
    EXPECT_EQ(extent.last, kMonday);
    EXPECT_EQ(extent.lastList, kMonday);
    EXPECT_EQ(reader.extent(kMonday - 1).first, std::nullopt);
    EXPECT_EQ(fateOf(*reader.share("New"), extent, 0), history::Fate::kKept);
    EXPECT_EQ(fateOf(*reader.share("New"), reader.extent(), 0), history::Fate::kVanished);
}

/// The courses of all shares as "NAME: TIME SIZE, TIME SIZE", times from kMonday on.
entries::Lines courses(std::time_t since, std::chrono::days days)
{
    entries::Lines lines;
    for (const auto& [name, points] : Reader(kFile).courses(since, days)) {
        std::string line = name + ":";
        for (const history::Point& point : points) {
            line +=
                " " + std::to_string(point.published - kMonday) + " " + entries::words(point.used);
        }
        lines.push_back(line);
    }
    return lines;
}

TEST_F(HistoryReader, coursesHaveADaysFirstEntryTheLastAndTheOneThatIsSoMuchOlder)
{
    constexpr std::chrono::days kOneDay{1};
    for (const std::time_t time : std::to_array<std::time_t>({0, 5, 9, kDay, kDay + 1, kDay + 6})) {
        remember(entry(kMonday + time, {share("Media", 5), share("Music", 7)}));
    }
    remember(entry(kMonday + kDay + 7, {share("Media", 6)}));
    history::Entry noList = entry(kMonday + kDay + 8, {});
    noList.hasList = false;
    remember(noList);
    EXPECT_EQ(courses(0, kOneDay), (entries::Lines{"Media: 0 5 M 5 5 M 86400 5 M 86407 6 M",
                                                   "Music: 0 7 M 5 7 M 86400 7 M"}));
    EXPECT_EQ(courses(kMonday + 6, kOneDay),
              (entries::Lines{"Media: 86400 5 M 86407 6 M", "Music: 86400 7 M"}));
    EXPECT_EQ(courses(kMonday + kDay + 8, kOneDay), entries::Lines{});
}

TEST_F(HistoryReader, waitsForAWriterOnlyAsLongAsItIsTold)
{
    remember(entry(kMonday, {share("Media", 5)}));
    const history::Database writer(kFile, history::Database::Access::kWrite);
    writer.run("BEGIN EXCLUSIVE");
    const auto failure =
        entries::failureOf([] { const Reader reader(kFile, std::chrono::milliseconds(1)); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->kind(), history::DatabaseError::Kind::kOther);
    EXPECT_STREQ(failure->what(), "database is locked");
}

TEST_F(HistoryReader, readsWhileAnotherWrites)
{
    remember(entry(kMonday, {share("Media", 5)}));
    const history::Database writer(kFile, history::Database::Access::kWrite);
    const history::Transaction transaction(writer);
    writer.run("DELETE FROM size");
    EXPECT_EQ(entries::points("Media"), entries::Lines{"0 5 M - -"});
}

} // namespace
