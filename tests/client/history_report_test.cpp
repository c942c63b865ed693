// SPDX-License-Identifier: MIT
#include "client/history_report.h"

#include "tests/client/household.h"

namespace {

using client::renderHistory;
using entries::kFile;
using history::Reader;

const std::string kShares = "SHARE        USED   CHANGE\n"
                            "Baby \"\\xff    5 G        -  new since 7 February 2026\n"
                            "Broken          -        -\n"
                            "Films       260 M  +120 MB  was Media until 4 February 2026\n"
                            "Old             -        -  gone since 9 February 2026\n\n";

class HistoryReport : public root::UntracedTest {
  protected:
    /// Without the plot, which has a test of its own.
    static std::string tableOf(const std::string& report)
    {
        return report.substr(std::min(report.find("SHARE "), report.size()));
    }

    static std::string showShare(const std::string& name, int days)
    {
        const Reader reader(kFile);
        return renderHistory(reader, *reader.share(name), household::lookedAt(days));
    }

    /// What it says of the change; the plot does not matter.
    static std::string changeOf(const std::string& name, int days)
    {
        const std::string shown = showShare(name, days);
        const std::size_t start = shown.find("Change over");
        return shown.substr(start, shown.find('\n', start) - start);
    }
};

TEST_F(HistoryReport, beginsWithTheDisksCourse)
{
    household::remember();
    EXPECT_EQ(
        renderHistory(Reader(kFile), household::lookedAt(30)),
        "Used on the disk:\n"
        "560 MB |                                                      * *  *\n"
        "       |                                              * * * *\n"
        "       |                                      * * * *\n"
        "       |                              * * * *\n"
        "       |                      * * * *\n"
        "       |              * * * *\n"
        "       |      * * * *\n"
        "444 MB |* * *\n"
        "        2026-01-16                                        2026-02-14\n\n" +
            kShares +
            "If it goes on filling like this, the disk is full in about 4 months.\n"); // 110 days
}

TEST_F(HistoryReport, hasNoShareThatIsGoneBeforeAnEntryOfTheFuture)
{
    household::remember();
    const std::time_t future = entries::kMonday + 3650 * entries::kDay;
    (void)history::Store(kFile).remember(entries::entry(future, {}), entries::kMonday);
    const std::string table = tableOf(renderHistory(Reader(kFile), household::lookedAt(30)));
    EXPECT_EQ(table.substr(0, kShares.size()), kShares);
}

TEST_F(HistoryReport, leavesOutSharesThatHaveLongGone)
{
    household::remember();
    EXPECT_EQ(tableOf(renderHistory(Reader(kFile), household::lookedAt(4))),
              "SHARE        USED     CHANGE\n"
              "Baby \"\\xff    5 G  no change\n"
              "Broken          -          -\n"
              "Films       260 M     +16 MB\n\n"
              "If it goes on filling like this, the disk is full in about 4 months.\n");
}

TEST_F(HistoryReport, saysThatThereIsNoForecast)
{
    household::remember(30);
    EXPECT_EQ(tableOf(renderHistory(Reader(kFile), household::lookedAt(30))),
              "SHARE        USED  CHANGE\n"
              "Baby \"\\xff    5 G       -  new since 7 February 2026\n"
              "Broken          -       -\n"
              "Films       260 M       -\n"
              "Old             -       -  gone since 9 February 2026\n\n"
              "The history does not show when the disk will be full.\n");
}

TEST_F(HistoryReport, saysThatTheHistoryHasStopped)
{
    household::remember();
    const auto report = [](std::time_t published) {
        return tableOf(renderHistory(Reader(kFile), household::lookedAt(30, published)))
            .substr(kShares.size() + 69);
    };
    EXPECT_EQ(report(household::kNow), "");
    EXPECT_EQ(report(household::kNow + 3000), "") << "it will be remembered at any moment";
    EXPECT_EQ(report(household::kNow + 2999),
              "The last status is not in the history: \"vokctl history --remember\" says why, if "
              "root runs it.\n");
}

TEST_F(HistoryReport, saysThatTheHistoryBeganAnew)
{
    household::remember();
    root::writeFile(kFile, "no database");
    {
        history::Store store(kFile);
        EXPECT_EQ(store.remember(household::entryOf(40), household::kNow),
                  history::Remembered::kBegunAnew);
    }
    EXPECT_EQ(renderHistory(Reader(kFile), household::lookedAt(30)),
              "SHARE        USED  CHANGE\n"
              "Baby \"\\xff    5 G       -\n"
              "Broken          -       -\n"
              "Films       260 M       -\n\n"
              "The history does not show when the disk will be full.\n"
              "The history began anew on 14 February 2026: its file was damaged, and is now "
              "/var/lib/vokcontrol/history.db.damaged.\n");
}

TEST_F(HistoryReport, showsAShareWithItsFormerNames)
{
    household::remember();
    EXPECT_EQ(showShare("Films", 10),
              "Films, known since 5 January 2026\n\n"
              "260 MB |                                                           *\n"
              "       |                                                    *\n"
              "       |                                       *     *\n"
              "       |                                *\n"
              "       |                          *\n"
              "       |             *     *\n"
              "       |      *\n"
              "224 MB |*\n"
              "        2026-02-05                                        2026-02-14\n\n"
              "Used: 260 M on 14 February 2026\n"
              "Change over 10 days: +40 MB\n"
              "Until 4 February 2026 its name was Media.\n");
}

TEST_F(HistoryReport, showsTheChangeOfTheDaysThatAreKnown)
{
    household::remember();
    EXPECT_EQ(changeOf("Films", 365), "Change over 40 days: +160 MB");
    EXPECT_EQ(changeOf("Films", 39), "Change over 39 days: +156 MB");
    EXPECT_EQ(changeOf("Baby \"\xFF", 30), "Change over 7 days: no change");
    EXPECT_EQ(changeOf("Old", 365), "Change over 365 days: not known");
}

TEST_F(HistoryReport, showsASharesEnd)
{
    household::remember();
    EXPECT_EQ(showShare("Old", 1), "Old, known since 5 January 2026, gone since 9 February 2026\n\n"
                                   "Used: 7 K on 9 February 2026\n"
                                   "Change over 1 day: not known\n");
}

TEST_F(HistoryReport, showsAShareThatWasNeverMeasured)
{
    household::remember();
    EXPECT_EQ(showShare("Broken", 30), "Broken, known since 5 January 2026\n\n"
                                       "It has never been measured.\n");
}

} // namespace
