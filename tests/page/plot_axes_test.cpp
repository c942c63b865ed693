// SPDX-License-Identifier: MIT
#include "page/plot_axes.h"

#include <cstdlib>
#include <gtest/gtest.h>

#include "view/wording.h"

namespace {

using page::sizeTicks;
using page::timeTicks;
using Strings = std::vector<std::string>;
using Sizes = std::vector<std::uint64_t>;

constexpr std::uint64_t kMega = 1000;
constexpr std::uint64_t kGiga = 1000000;

/// The labels at the ticks.
Strings labels(std::uint64_t least, std::uint64_t most)
{
    Strings words;
    for (const std::uint64_t size : sizeTicks(least, most)) {
        words.push_back(view::formatKibibytes(size));
    }
    return words;
}

TEST(SizeTicks, beginAtZeroIfTheSizesAreFarApartOrAllTheSame)
{
    EXPECT_EQ(labels(325, 900), (Strings{"0 KB", "500 KB", "1.0 MB"}));
    EXPECT_EQ(labels(46 * kMega, 262 * kMega), (Strings{"0 KB", "100 MB", "200 MB", "300 MB"}));
    EXPECT_EQ(labels(38 * kMega, 38 * kMega),
              (Strings{"0 KB", "10 MB", "20 MB", "30 MB", "40 MB"}));
    EXPECT_EQ(labels(500 * kGiga, 505 * kGiga), (Strings{"0 KB", "200 GB", "400 GB", "600 GB"}));
}

TEST(SizeTicks, beginBelowTheSizesIfTheseAreClose)
{
    EXPECT_EQ(labels(470 * kGiga, 505 * kGiga),
              (Strings{"470 GB", "480 GB", "490 GB", "500 GB", "510 GB"}));
    EXPECT_EQ(labels(900 * kMega, kGiga), (Strings{"900 MB", "1.0 GB"}));
}

TEST(SizeTicks, haveDifferentLabels)
{
    EXPECT_EQ(sizeTicks(0, 0), (Sizes{0, 1}));
    EXPECT_EQ(sizeTicks(1, 1), (Sizes{0, 1}));
    EXPECT_EQ(labels(2 * kGiga, 2 * kGiga),
              (Strings{"0 KB", "500 MB", "1.0 GB", "1.5 GB", "2.0 GB"}));
    EXPECT_EQ(labels(9 * kGiga, 11 * kGiga), (Strings{"9.0 GB", "10 GB", "11 GB"}));
    EXPECT_EQ(labels(kGiga, kGiga + 60 * kMega), (Strings{"1.0 GB", "1.1 GB"}));
}

TEST(SizeTicks, takeTheLargestSizeOfAStatus)
{
    EXPECT_EQ(sizeTicks(0, 65535 * kGiga),
              (Sizes{0, 20000 * kGiga, 40000 * kGiga, 60000 * kGiga, 80000 * kGiga}));
}

// ---- Times ------------------------------------------------------------------------------------

constexpr std::time_t kDay = 86400;
constexpr std::time_t kSunday = 1795305600; // 2026-11-22 00:00:00 UTC

class TimeTicks : public testing::Test {
  protected:
    void SetUp() override { setZone("UTC"); }
    void TearDown() override { setZone("UTC"); }

    static void setZone(const char* zone)
    {
        ::setenv("TZ", zone, 1);
        ::tzset();
    }

    /// The labels of the days before a Sunday in November 2026.
    static Strings labelsOf(int days)
    {
        Strings words;
        for (const page::TimeTick& tick : timeTicks(kSunday - days * kDay, kSunday)) {
            words.push_back(tick.label);
        }
        return words;
    }
};

TEST_F(TimeTicks, areDaysMondaysMonthsAndYears)
{
    EXPECT_EQ(labelsOf(2), (Strings{"20 Nov", "21 Nov", "22 Nov"}));
    EXPECT_EQ(labelsOf(9), (Strings{"13 Nov", "15 Nov", "17 Nov", "19 Nov", "21 Nov"}));
    EXPECT_EQ(labelsOf(30), (Strings{"26 Oct", "2 Nov", "9 Nov", "16 Nov"}));
    EXPECT_EQ(labelsOf(45), (Strings{"12 Oct", "19 Oct", "26 Oct", "2 Nov", "9 Nov", "16 Nov"}));
    EXPECT_EQ(labelsOf(46), (Strings{"Nov 2026"}));
    EXPECT_EQ(labelsOf(100), (Strings{"Sep 2026", "Oct", "Nov"}));
    EXPECT_EQ(labelsOf(365), (Strings{"Jan 2026", "Mar", "May", "Jul", "Sep", "Nov"}));
    EXPECT_EQ(labelsOf(600), (Strings{"May 2025", "Sep", "Jan 2026", "May", "Sep"}));
    EXPECT_EQ(labelsOf(3 * 365), (Strings{"2024", "2025", "2026"}));
    EXPECT_EQ(labelsOf(10 * 365), (Strings{"2018", "2020", "2022", "2024", "2026"}));
    EXPECT_EQ(labelsOf(50 * 365), (Strings{"1980", "1990", "2000", "2010", "2020"}));
    EXPECT_EQ(labelsOf(100 * 365), Strings{});
}

TEST_F(TimeTicks, areAtMostSevenAndAtLeastOne)
{
    for (int days = 1; days < 60 * 365; days += (days < 900) ? 1 : 50) {
        const std::size_t count = labelsOf(days).size();
        EXPECT_GE(count, 1U) << days;
        EXPECT_LE(count, 7U) << days;
    }
}

TEST_F(TimeTicks, areAtTheBeginningOfTheDayWhereTheApplianceIs)
{
    setZone("CET-1CEST,M3.5.0,M10.5.0/3");
    const std::vector<page::TimeTick> ticks = timeTicks(kSunday - 30 * kDay, kSunday);
    ASSERT_EQ(ticks.size(), 4U);
    EXPECT_EQ(ticks[0], (page::TimeTick{1792969200, "26 Oct"}));    // 25 October, 23:00 UTC
    EXPECT_EQ(timeTicks(1785362400, 1785362400 + kDay).size(), 2U); // 30 July, summer time
}

TEST_F(TimeTicks, areBetweenTheTimes)
{
    EXPECT_EQ(timeTicks(kSunday + 1, kSunday + kDay),
              (std::vector<page::TimeTick>{{kSunday + kDay, "23 Nov"}}));
    EXPECT_EQ(timeTicks(kSunday + 1, kSunday + 2), std::vector<page::TimeTick>());
}

} // namespace
