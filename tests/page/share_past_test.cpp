// SPDX-License-Identifier: MIT
#include "page/share_past.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <string>

#include "page/plot.h"

namespace {

using history::Point;
using page::Period;
using page::readPeriod;
using page::SharePast;
using view::Space;

constexpr std::time_t kDay = 86400;
constexpr std::time_t kNow = 1795348800; // 2026-11-22 12:00:00 UTC

std::time_t ago(int days)
{
    return kNow - days * kDay;
}

Point pointAt(int age, std::uint16_t used)
{
    return {.published = ago(age), .used = Space{used, 'M'}, .backupState = {}, .backupDay = {}};
}

/// A share that has been there for as long as the history, which is a year, and still is.
SharePast kept(std::vector<Point> points)
{
    SharePast past;
    past.share = {.name = "a&b", .first = ago(365), .last = kNow, .formerNames = {}};
    past.extent = {.first = ago(365), .last = kNow, .lastList = kNow, .begunAnew = {}};
    past.points = std::move(points);
    return past;
}

config::Configuration configuration()
{
    config::Configuration all;
    all.words[2] = "disk <full>";
    return all;
}

std::string card(const std::optional<SharePast>& past, const char* period = "month")
{
    return page::pastCard("a&b", past, readPeriod(period), kNow, configuration()).text();
}

const std::string kHead = R"(<section class="card" aria-labelledby="history">
<div class="head"><h2 id="history">History</h2>
)";
const std::string kMonth =
    kHead +
    R"(<nav class="periods" aria-label="Period"><ul><li><a href="/cgi-bin/vokpage/share?name=a%26b&amp;period=month" aria-current="page">30 days</a></li><li><a href="/cgi-bin/vokpage/share?name=a%26b&amp;period=year">A year</a></li><li><a href="/cgi-bin/vokpage/share?name=a%26b&amp;period=all">All</a></li></ul></nav>
</div>
)";
const std::string kEnd = "</section>\n";

/// The sentences of a card before its plot.
std::string sentences(const std::string& text)
{
    const std::size_t start = text.find("</nav>\n</div>\n") + 14;
    return text.substr(start, text.find("<div class=\"plot\"") - start);
}

TEST(PastCard, hasThePlotItsWordsAndTheFigures)
{
    Point backedUp = pointAt(0, 20);
    backedUp.backupDay = std::chrono::year(2026) / std::chrono::November / 20;
    backedUp.backupState = 2;
    Point stateless = pointAt(10, 15);
    stateless.backupDay = backedUp.backupDay;
    const std::string plot =
        page::plot({{ago(10), 15'000}, {ago(5), 10'000}, {kNow, 20'000}}, ago(30), kNow, "plot")
            .text();
    EXPECT_EQ(card(kept({stateless, pointAt(5, 10), backedUp})),
              kMonth + R"(<p class="change">+5.0 MB in 10 days</p>
<p id="plot">From 12 November 2026 to 22 November 2026 it used at least 10 MB and at most 20 MB.</p>
)" + plot + R"(<details>
<summary>The figures as a table</summary>
<table class="listing figures">
<thead><tr><th scope="col">Published</th><th scope="col">Used</th><th scope="col">Last backup</th></tr></thead>
<tbody>
<tr><th scope="row">22 November 2026, 12:00 UTC</th><td>20 MB</td><td>20 November 2026, state 2 (disk &lt;full&gt;)</td></tr>
<tr><th scope="row">17 November 2026, 12:00 UTC</th><td>10 MB</td><td>never</td></tr>
<tr><th scope="row">12 November 2026, 12:00 UTC</th><td>15 MB</td><td>20 November 2026</td></tr>
</tbody>
</table>
</details>
)" + kEnd);
}

TEST(PastCard, saysIfThereIsNoHistory)
{
    EXPECT_EQ(card(std::nullopt),
              kHead + "</div>\n<p>There is no history of this share yet.</p>\n" + kEnd);
    EXPECT_EQ(card(kept({})), kMonth + "<p>Its size was not published in this time.</p>\n" + kEnd);
    Point unmeasured = pointAt(1, 0);
    unmeasured.used.reset();
    EXPECT_EQ(card(kept({unmeasured})), card(kept({})));
}

TEST(PastCard, looksAsFarBackAsItsPeriod)
{
    const SharePast past = kept({pointAt(500, 1), pointAt(364, 2), pointAt(29, 3), pointAt(0, 3)});
    EXPECT_EQ(sentences(card(past)),
              "<p class=\"change\">no change in 29 days</p>\n"
              "<p id=\"plot\">From 24 October 2026 to 22 November 2026 it used 3 MB.</p>\n");
    EXPECT_EQ(sentences(card(past, "year")),
              "<p class=\"change\">+1.0 MB in 364 days</p>\n"
              "<p id=\"plot\">From 23 November 2025 to 22 November 2026 it used at least 2 MB and "
              "at most 3 MB.</p>\n");
    EXPECT_EQ(sentences(card(past, "all")),
              "<p class=\"change\">+2.0 MB in 500 days</p>\n"
              "<p id=\"plot\">From 10 July 2025 to 22 November 2026 it used at least 1 MB and at "
              "most 3 MB.</p>\n");
}

std::size_t marksOf(const std::string& text)
{
    std::size_t count = 0;
    for (std::size_t at = text.find("<circle"); at != text.npos;
         at = text.find("<circle", at + 1)) {
        ++count;
    }
    return count;
}

/// Each hour of the last 30 days, with so many MB; the least and the most are each in the middle of
/// a day, and the first entry is in the first day.
std::vector<Point> everyHour()
{
    std::vector<Point> points;
    for (int hour = 719; hour >= 0; --hour) {
        points.push_back({.published = kNow - hour * std::time_t{3600},
                          .used = Space{static_cast<std::uint16_t>(900 - hour), 'M'},
                          .backupState = {},
                          .backupDay = {}});
    }
    points[230].used = Space{20, 'M'};
    points[470].used = Space{990, 'M'};
    return points;
}

/// The sizes in the table, the newest first.
std::vector<std::string> listedSizes(const std::string& text)
{
    std::vector<std::string> sizes;
    for (std::size_t at = text.find("</th><td>"); at != text.npos;
         at = text.find("</th><td>", at + 1)) {
        sizes.push_back(text.substr(at + 9, text.find("</td>", at + 9) - at - 9));
    }
    return sizes;
}

TEST(PastCard, drawsTheLastEntryOfEachThirtiethAndTheFirstTheLeastAndTheMostOfAll)
{
    std::vector<std::string> sizes;
    for (int day = 0; day < 30; ++day) {
        sizes.push_back(std::to_string(900 - 24 * day) + " MB");
        if (day == 10) {
            sizes.emplace_back("990 MB");
        }
        if (day == 20) {
            sizes.emplace_back("20 MB");
        }
    }
    sizes.emplace_back("181 MB");
    const std::string text = card(kept(everyHour()));
    EXPECT_EQ(listedSizes(text), sizes);
    EXPECT_EQ(marksOf(text), 33U);
    EXPECT_EQ(marksOf(card(kept({pointAt(0, 1)}), "all")), 1U);
}

TEST(PastCard, wordsAreAboutAllEntriesOfThePeriod)
{
    const std::string words =
        "<p class=\"change\">+696 MB in 29 days</p>\n"
        "<p id=\"plot\">From 23 October 2026 to 22 November 2026 it used at least 20 MB and at "
        "most 990 MB.</p>\n";
    for (const char* period : {"month", "year", "all"}) {
        EXPECT_EQ(sentences(card(kept(everyHour()), period)), words) << period;
    }
}

// ---- What became of the share -----------------------------------------------------------------

const std::string kOneEntry = "<p id=\"plot\">From 20 November 2026 to 20 November 2026 it used 3 "
                              "MB.</p>\n";

TEST(PastCard, saysThatAShareIsNewForAsLongAsThePeriodIs)
{
    SharePast past = kept({pointAt(2, 3)});
    past.share.first = ago(31);
    EXPECT_EQ(sentences(card(past)),
              "<p>It is new: it was first published on 22 October 2026.</p>\n" + kOneEntry);
    past.share.first = ago(33);
    EXPECT_EQ(sentences(card(past)), kOneEntry);
    EXPECT_EQ(sentences(card(past, "year")),
              "<p>It is new: it was first published on 20 October 2026.</p>\n" + kOneEntry);
}

TEST(PastCard, saysThatAShareIsGoneAndNotHowItChanges)
{
    SharePast past = kept({pointAt(9, 1), pointAt(2, 3)});
    past.share.last = ago(2);
    EXPECT_EQ(sentences(card(past)),
              "<p>It is gone: it was last published on 20 November 2026.</p>\n"
              "<p id=\"plot\">From 13 November 2026 to 20 November 2026 it used at least 1 MB and "
              "at most 3 MB.</p>\n");
}

TEST(PastCard, saysWhichNamesAShareHad)
{
    SharePast past = kept({pointAt(2, 3)});
    past.share.formerNames = {{"<x>", ago(90)}, {"y", ago(3)}};
    EXPECT_EQ(sentences(card(past)),
              "<p>It was renamed: until 24 August 2026 its name was &lt;x&gt;.</p>\n"
              "<p>It was renamed: until 19 November 2026 its name was y.</p>\n" +
                  kOneEntry);
}

TEST(PastCard, saysThatTheHistoryBeganAnew)
{
    SharePast past = kept({pointAt(2, 3)});
    past.extent.begunAnew = ago(3);
    EXPECT_EQ(sentences(card(past)), "<p>The history began anew on 19 November 2026, because its "
                                     "file was damaged.</p>\n" +
                                         kOneEntry);
}

// ---- Periods ----------------------------------------------------------------------------------

TEST(Period, isAMonthUnlessOneIsKnown)
{
    for (const char* key : {"month", "", "x", "YEAR"}) {
        EXPECT_EQ(readPeriod(key).key, "month") << key;
    }
    EXPECT_EQ(readPeriod("year").days, std::chrono::days(365));
    EXPECT_EQ(readPeriod("all").key, "all");
}

TEST(Period, needsEntriesOfTwoDaysMoreToCompareWith)
{
    EXPECT_EQ(page::startOf(readPeriod("month"), kNow), ago(32));
    EXPECT_EQ(page::startOf(readPeriod("year"), kNow), ago(367));
    EXPECT_EQ(page::startOf(readPeriod("all"), kNow), 0);
}

} // namespace
