// SPDX-License-Identifier: MIT
#include "view/wording.h"

#include <gtest/gtest.h>
#include <vector>

#include "text/translation.h"

namespace {

using namespace view;
using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::year_month_day;

constexpr std::time_t kMoment = 1795253583; // 2026-11-21 09:33:03
constexpr sys_days kToday =
    year_month_day(std::chrono::year(2026), std::chrono::November, std::chrono::day(21));

TEST(FormatSpace, isValueAndUnit)
{
    EXPECT_EQ(formatSpace({604, 'K'}), "604 KB");
    EXPECT_EQ(formatSpace({65535, 'G'}), "65535 GB");
}

TEST(Space, countsInTheUnitsOfTheCollector)
{
    EXPECT_EQ((Space{604, 'K'}).kibibytes(), 604U);
    EXPECT_EQ((Space{6, 'M'}).kibibytes(), 6000U);
    EXPECT_EQ((Space{65535, 'G'}).kibibytes(), 65535000000U);
}

TEST(FormatKibibytes, hasADecimalWhereItIsSmall)
{
    EXPECT_EQ(formatKibibytes(0), "0 KB");
    EXPECT_EQ(formatKibibytes(999), "999 KB");
    EXPECT_EQ(formatKibibytes(1000), "1.0 MB");
    EXPECT_EQ(formatKibibytes(9999), "9.9 MB");
    EXPECT_EQ(formatKibibytes(10000), "10 MB");
    EXPECT_EQ(formatKibibytes(999999), "999 MB");
    EXPECT_EQ(formatKibibytes(1271836), "1.2 GB");
    EXPECT_EQ(formatKibibytes(65535000000), "65535 GB");
}

TEST(FormatPart, isRounded)
{
    EXPECT_EQ(formatPart(0, 100), "0 %");
    EXPECT_EQ(formatPart(0, 0), "0 %");
    EXPECT_EQ(formatPart(1, 1000), "under 1 %");
    EXPECT_EQ(formatPart(5, 1000), "1 %");
    EXPECT_EQ(formatPart(786, 1000), "79 %");
    EXPECT_EQ(formatPart(1000, 1000), "100 %");
}

TEST(FormatDate, isForPeopleAndForPrograms)
{
    EXPECT_EQ(formatDate(kToday), "21 November 2026");
    EXPECT_EQ(formatDate(sys_days(days(0))), "1 January 1970");
    EXPECT_EQ(formatIsoDate(kToday), "2026-11-21");
    EXPECT_EQ(formatIsoDate(sys_days(days(0))), "1970-01-01");
    EXPECT_EQ(formatIsoDate(
                  year_month_day(std::chrono::year(7), std::chrono::March, std::chrono::day(2))),
              "0007-03-02");
}

TEST(FormatDate, isAsEachLanguageWritesIt)
{
    struct Row {
        const char* language;
        std::string first;
        std::string today;
    };
    const std::vector<Row> rows = {
        {"ge", "1. November 2026", "21. November 2026"},
        {"fr", "1er novembre 2026", "21 novembre 2026"},
        {"sp", "1 de noviembre de 2026", "21 de noviembre de 2026"},
        {"it", "1\u00BA novembre 2026", "21 novembre 2026"},
        {"sc", "2026\u5E7411\u67081\u65E5", "2026\u5E7411\u670821\u65E5"},
        {"tc", "2026\u5E7411\u67081\u65E5", "2026\u5E7411\u670821\u65E5"},
        {"en", "1 November 2026", "21 November 2026"},
    };
    for (const Row& row : rows) {
        text::speak(*core::findLanguage(row.language));
        EXPECT_EQ(formatDate(kToday - days(20)), row.first);
        EXPECT_EQ(formatDate(kToday), row.today);
    }
}

TEST(JoinSentences, putsABlankBetweenThemWhereALanguageHasOne)
{
    EXPECT_EQ(joinSentences("", "Two."), "Two.");
    EXPECT_EQ(joinSentences("One.", "Two."), "One. Two.");
    text::speak(*core::findLanguage("sc"));
    EXPECT_EQ(joinSentences("1\u3002", "2\u3002"), "1\u30022\u3002");
    text::speak(core::kEnglish);
}

TEST(FormatTime, isLocal)
{
    EXPECT_EQ(formatTime(kMoment), "21 November 2026, 09:33 UTC");
    EXPECT_EQ(dayOf(kMoment), kToday);
    EXPECT_EQ(formatTime(2208988800), "1 January 2040, 00:00 UTC");
}

TEST(FormatElapsed, growsCoarser)
{
    EXPECT_EQ(formatElapsed(kMoment, kMoment - 5), "just now") << "a clock that was set back";
    EXPECT_EQ(formatElapsed(kMoment, kMoment + 59), "just now");
    EXPECT_EQ(formatElapsed(kMoment, kMoment + 60), "1 minute ago");
    EXPECT_EQ(formatElapsed(kMoment, kMoment + 3599), "59 minutes ago");
    EXPECT_EQ(formatElapsed(kMoment, kMoment + 3600), "1 hour ago");
    EXPECT_EQ(formatElapsed(kMoment, kMoment + 2 * 86400 - 1), "47 hours ago");
    EXPECT_EQ(formatElapsed(kMoment, kMoment + 2 * 86400), "2 days ago");
}

TEST(FormatAge, growsCoarser)
{
    const std::vector<std::pair<int, const char*>> ages = {
        {-1, "in the future"},  {0, "today"},           {1, "yesterday"},     {2, "2 days ago"},
        {13, "13 days ago"},    {14, "2 weeks ago"},    {59, "8 weeks ago"},  {60, "2 months ago"},
        {365, "12 months ago"}, {729, "24 months ago"}, {730, "2 years ago"},
    };
    for (const auto& [age, words] : ages) {
        EXPECT_EQ(formatAge(kToday - days(age), kToday), words) << age;
    }
}

TEST(Wording, namesAreSeparated)
{
    EXPECT_EQ(view::formatNames({}), "");
    EXPECT_EQ(view::formatNames({"sda1"}), "sda1");
    EXPECT_EQ(view::formatNames({"sda1", "sdb1", "sdc1"}), "sda1, sdb1, sdc1");
}

TEST(Wording, partHasAUnitOnlyIfItIsAnother)
{
    EXPECT_EQ(view::formatPartOfKibibytes(312000000, 500000000), "312");
    EXPECT_EQ(view::formatPartOfKibibytes(1400000, 9000000), "1.4");
    EXPECT_EQ(view::formatPartOfKibibytes(900000, 1400000), "900 MB");
}

} // namespace
