// SPDX-License-Identifier: MIT
#include "history/thinning.h"

#include <algorithm>

#include "history/schema.h"
#include "history/writing.h"
#include "tests/history/entries.h"

namespace {

using entries::bare;
using entries::kDay;
using entries::kHour;
using entries::kMonday;
using history::Database;
using history::Kept;
using history::keptAs;

class HistoryThinning : public root::UntracedTest {
  protected:
    void SetUp() override
    {
        root::UntracedTest::SetUp();
        database_.emplace("/tmp/file.db", Database::Access::kWrite);
        makeSchema(*database_);
    }

    Kept add(const history::Entry& entry)
    {
        const Kept kept = keptAs(*database_, entry);
        insertEntry(*database_, entry, kept);
        return kept;
    }

    std::optional<Database> database_;
};

TEST_F(HistoryThinning, keepsTheFirstOfAWeekForEverAndTheFirstOfADayForTwoYears)
{
    EXPECT_EQ(add(bare(kMonday - 1)), Kept::kForEver) << "a Sunday, the history's first";
    EXPECT_EQ(add(bare(kMonday)), Kept::kForEver);
    EXPECT_EQ(add(bare(kMonday + kHour)), Kept::kThirtyDays);
    EXPECT_EQ(add(bare(kMonday + kDay - 1)), Kept::kThirtyDays);
    EXPECT_EQ(add(bare(kMonday + kDay)), Kept::kTwoYears);
    EXPECT_EQ(add(bare(kMonday + kDay + 1)), Kept::kThirtyDays);
    EXPECT_EQ(add(bare(kMonday + 7 * kDay - 1)), Kept::kTwoYears);
    EXPECT_EQ(add(bare(kMonday + 7 * kDay)), Kept::kForEver);
}

TEST_F(HistoryThinning, keepsAnEntryWithoutSharesOnlyForThirtyDays)
{
    history::Entry noList = bare(kMonday);
    noList.hasList = false;
    EXPECT_EQ(add(noList), Kept::kThirtyDays);
    EXPECT_EQ(add(bare(kMonday + 1)), Kept::kForEver) << "the other is not the week's first";
}

TEST_F(HistoryThinning, takesTheFirstDaysOf1970)
{
    EXPECT_EQ(add(bare(1)), Kept::kForEver);
    EXPECT_EQ(add(bare(2)), Kept::kThirtyDays);
}

TEST_F(HistoryThinning, removesWhatIsOverAndNothingElse)
{
    const std::vector<std::time_t> times = {0,          kHour,          kDay,       kDay + kHour,
                                            7 * kDay,   7 * kDay + 1,   730 * kDay, 731 * kDay,
                                            760 * kDay, 761 * kDay - 1, 761 * kDay};
    for (const std::time_t time : times) {
        add(entries::entry(kMonday + time, {entries::share("Media", 1)}));
    }
    add(entries::entry(kMonday + 2 * kDay + 1, {entries::share("Media", 1)}));
    add(entries::entry(kMonday + 2 * kDay + 2, {entries::share("Short", 1)}));
    history::thin(*database_, kMonday + 761 * kDay);
    const entries::Lines left = {
        "0 1 M - -",        "604800 1 M - -",   "63072000 1 M - -", "63158400 1 M - -",
        "65664000 1 M - -", "65750399 1 M - -", "65750400 1 M - -",
    };
    EXPECT_EQ(entries::points("Media", "/tmp/file.db"), left);
    EXPECT_EQ(entries::times("/tmp/file.db"),
              (std::vector<std::time_t>{0, 7 * kDay, 730 * kDay, 731 * kDay, 760 * kDay,
                                        761 * kDay - 1, 761 * kDay}));
    EXPECT_EQ(entries::shares("/tmp/file.db"), entries::Lines{"Media 0 65750400"})
        << "nothing is left of the share that was there for an hour";
}

TEST_F(HistoryThinning, looksRowsUpInsteadOfReadingAll)
{
    history::Statement plan(*database_,
                            "EXPLAIN QUERY PLAN DELETE FROM size WHERE share IN (SELECT id FROM "
                            "share) AND published IN (SELECT published FROM publication WHERE "
                            "kept = 0 AND published < 1)");
    ASSERT_TRUE(plan.next());
    EXPECT_EQ(plan.bytes(3), "SEARCH size USING PRIMARY KEY (share=? AND published=?)");
}

} // namespace
