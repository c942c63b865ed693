// SPDX-License-Identifier: MIT
#include "page/course.h"

#include <cstdint>
#include <gtest/gtest.h>

namespace {

using history::Point;
using page::courseOf;
using page::wordChange;
using std::chrono::days;
using view::Space;
using Points = std::vector<Point>;

constexpr std::time_t kDay = 86400;
constexpr std::time_t kNow = 1795253583; // 2026-11-21

Point pointAt(std::time_t age, std::optional<Space> used)
{
    return {.published = kNow - age, .used = used, .backupState = {}, .backupDay = {}};
}

Point megabytes(int age, std::uint16_t used)
{
    return pointAt(age * kDay, Space{used, 'M'});
}

std::string drawn(const std::string& pairs, const std::string& words)
{
    return R"(<svg class="course" viewBox="0 0 300 40" preserveAspectRatio="none" aria-hidden="true"><polyline points=")" +
           pairs + R"("/></svg> <span class="quiet">)" + words + "</span>";
}

TEST(Course, isALineAndTheChangeInWords)
{
    EXPECT_EQ(
        courseOf({megabytes(31, 500), megabytes(30, 100), megabytes(15, 300), megabytes(0, 200)},
                 kNow)
            .text(),
        drawn("0,37 150,3 300,20", "+100 MB in 30 days"));
}

TEST(Course, leavesOutWhatWasNotMeasured)
{
    EXPECT_EQ(
        courseOf({megabytes(20, 100), pointAt(10 * kDay, {}), megabytes(5, 100), pointAt(0, {})},
                 kNow)
            .text(),
        drawn("100,20 250,20", "no change in 15 days"));
}

TEST(Course, changesOfLessThanATenthAreSmallSteps)
{
    EXPECT_EQ(courseOf({megabytes(20, 990), megabytes(10, 1000)}, kNow).text(),
              drawn("100,21 200,19", "+10 MB in 10 days"));
    EXPECT_EQ(courseOf({pointAt(2 * kDay, Space{0, 'K'}), pointAt(0, Space{0, 'K'})}, kNow).text(),
              drawn("280,20 300,20", "no change in 2 days"));
}

TEST(Course, isNothingIfTheEntriesSpanLessThanADay)
{
    EXPECT_EQ(courseOf({}, kNow).text(), "");
    EXPECT_EQ(courseOf({megabytes(0, 1)}, kNow).text(), "");
    EXPECT_EQ(courseOf({pointAt(kDay - 1, Space{1, 'M'}), megabytes(0, 5)}, kNow).text(), "");
    EXPECT_EQ(courseOf({megabytes(40, 1), megabytes(0, 5)}, kNow).text(), "");
    EXPECT_NE(courseOf({megabytes(1, 1), megabytes(0, 5)}, kNow).text(), "");
}

TEST(Change, isSaidOverTheDaysThatThereAre)
{
    EXPECT_EQ(wordChange({megabytes(30, 7), megabytes(0, 2)}, days(30)), "-5.0 MB in 30 days");
    EXPECT_EQ(wordChange({megabytes(1, 2), megabytes(0, 7)}, days(30)), "+5.0 MB in 1 day");
    EXPECT_EQ(wordChange({megabytes(400, 1), megabytes(366, 2), megabytes(0, 7)}, days(365)),
              "+5.0 MB in 365 days");
}

TEST(Change, isNotSaidIfThereIsNothingToCompareWith)
{
    EXPECT_EQ(wordChange({}, days(30)), "");
    EXPECT_EQ(wordChange({megabytes(0, 7)}, days(30)), "");
    EXPECT_EQ(wordChange({megabytes(33, 2), megabytes(0, 7)}, days(30)), "");
    EXPECT_EQ(wordChange({megabytes(33, 2), megabytes(25, 5), megabytes(0, 7)}, days(30)),
              "+2.0 MB in 25 days");
}

} // namespace
