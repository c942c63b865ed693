// SPDX-License-Identifier: MIT
#include "page/overview_collection.h"

#include <cstdlib>
#include <gtest/gtest.h>

#include "page/layout.h"
#include "tests/page/visits.h"

namespace {

using view::Progress;
using view::PublishedStatus;

constexpr std::time_t kStart = 1795253583; // 09:33:03

std::string stateOf(const Progress& progress)
{
    ::setenv("TZ", "UTC", 1);
    ::tzset();
    PublishedStatus status;
    status.isCollecting = true;
    return page::collectionState(status, progress).text();
}

TEST(CollectionState, isTheShareItsPlaceAndTheStart)
{
    EXPECT_EQ(stateOf({.since = kStart, .share = "<M>", .place = 3, .count = 8}),
              "<p id=\"progress\" data-collecting>Measuring <bdi>&lt;M&gt;</bdi>, share 3 of 8, "
              "since 09:33.</p>\n"
              "<progress aria-labelledby=\"progress\" max=\"8\" value=\"2\"></progress>\n");
}

TEST(CollectionState, leavesOutWhatIsNotKnown)
{
    EXPECT_EQ(stateOf({.since = kStart, .share = "New"}),
              "<p id=\"progress\" data-collecting>Measuring <bdi>New</bdi>, since 09:33.</p>\n");
    EXPECT_EQ(stateOf({.since = kStart}),
              "<p id=\"progress\" data-collecting>Measuring since 09:33.</p>\n");
}

TEST(CollectionState, saysThatNoneRuns)
{
    PublishedStatus status;
    EXPECT_EQ(page::collectionState(status, {}).text(),
              "<p class=\"quiet\">No collection is running.</p>\n");
    status.isInterrupted = true;
    EXPECT_EQ(page::collectionState(status, {}).text(),
              "<p>The last collection was interrupted.</p>\n");
}

TEST(MeasureForm, carriesTokenAndOrder)
{
    EXPECT_EQ(page::measureForm(visits::kToken, page::readOrder("name")).text(),
              R"(<form method="post" action="/cgi-bin/vokpage/collection">
<input type="hidden" name="token" value=")" +
                  visits::kToken + R"(">
<input type="hidden" name="sort" value="name">
<button class="main" id="measure">Measure now</button>
</form>
)");
}

/// What the page's head gets if its address has this wait.
std::string reloaded(const char* wait)
{
    return page::reloadWithoutScript(page::readOrder("name"), wait).text();
}

std::string reloadAfter(const std::string& seconds, const std::string& next)
{
    return "<noscript><meta http-equiv=\"refresh\" content=\"" + seconds +
           ";url=/cgi-bin/vokpage?sort=name&amp;wait=" + next + "\"></noscript>\n";
}

TEST(Reload, comesAfterTwiceAsLongEachTime)
{
    EXPECT_EQ(reloaded(""), reloadAfter("3", "6"));
    EXPECT_EQ(reloaded("10"), reloadAfter("10", "20"));
    EXPECT_EQ(reloaded("300"), reloadAfter("300", "600"));
    EXPECT_EQ(reloaded("600"), reloadAfter("300", "600"));
}

TEST(Reload, takesNoOtherWait)
{
    for (const char* wait : {"0", "-1", "x", "4294967296", "1;url=//evil"}) {
        EXPECT_EQ(reloaded(wait), reloadAfter("3", "6")) << wait;
    }
}

} // namespace
