// SPDX-License-Identifier: MIT
#include "page/pages.h"

#include <ctime>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/page/service.h"
#include "tests/page/visits.h"
#include "tests/support/collector.h"

namespace {

using root::le32;

std::string zeros(std::size_t count)
{
    return std::string(count, '\0');
}

class CollectionPage : public root::Test {
  protected:
    /// A collection began so many seconds ago.
    static void mark(std::uint32_t age)
    {
        const auto now = static_cast<std::uint32_t>(std::time(nullptr));
        root::writeFile(root::kSemaphoreFile, "\1" + zeros(1) + le32(now - age));
    }

    /// Sends the button's form; the service starts what the answers let it.
    static page::Page send(const std::string& fields = "")
    {
        config::Configuration settings;
        settings.socket = FakeService::kSocket;
        return visits::makeFor(visits::administrator(), page::makeCollection, visits::post(fields),
                               settings);
    }

    static const inline std::string kStarted = le32(0);
    static const inline std::string kFrame = "sgss " + le32(0) + "\n";
};

TEST_F(CollectionPage, isAFragmentThatSaysHowFarItIs)
{
    const page::Page none =
        visits::makeFor(visits::administrator(), page::makeCollection, visits::get());
    EXPECT_TRUE(none.isFragment);
    EXPECT_EQ(none.body.text(), "<p class=\"quiet\">No collection is running.</p>\n");
    const root::IdleCollector collector;
    mark(0);
    const std::string body =
        visits::makeFor(visits::administrator(), page::makeCollection, visits::get()).body.text();
    EXPECT_TRUE(body.starts_with("<p id=\"progress\" data-collecting>Measuring since ")) << body;
}

TEST_F(CollectionPage, formStartsACollectionAndLeadsToTheOverview)
{
    const FakeService service({kStarted}, [](int) { root::writeFile(root::kStatusFile, "new"); });
    EXPECT_EQ(send("sort=name").next, "?sort=name");
    EXPECT_EQ(FakeService::frames(), kFrame);
}

TEST_F(CollectionPage, startThatDidNothingIsRepeated)
{
    const FakeService service({kStarted, kStarted}, [](int number) {
        if (number == 2) {
            root::writeFile(root::kStatusFile, "new");
        }
    });
    EXPECT_EQ(send().next, "");
    EXPECT_EQ(FakeService::frames(), kFrame + kFrame);
}

TEST_F(CollectionPage, saysWhenNothingStarts)
{
    constexpr std::size_t kMoreThanAreAsked = 50;
    const FakeService service(std::vector<std::string>(kMoreThanAreAsked, kStarted));
    try {
        (void)send();
        FAIL() << "it was not refused";
    } catch (const page::Refusal& refusal) {
        EXPECT_EQ(refusal.status(), 503);
        EXPECT_STREQ(refusal.what(),
                     "No collection has started. If another process of the appliance has "
                     "\"pelstatus\" in its command line, it is taken for one.");
    }
}

TEST_F(CollectionPage, nothingIsStartedWhileACollectionRuns)
{
    const FakeService service({});
    const root::IdleCollector collector;
    mark(0);
    EXPECT_EQ(send().next, "");
    EXPECT_EQ(FakeService::frames(), "");
}

TEST_F(CollectionPage, nothingIsStartedWhileAnInterruptedOneBlocksIt)
{
    const FakeService service({});
    mark(7000);
    EXPECT_EQ(send("sort=backup").next, "?sort=backup");
    EXPECT_EQ(FakeService::frames(), "");
}

TEST_F(CollectionPage, saysWhenTheServiceDoesNotAnswer)
{
    testing::internal::CaptureStderr();
    try {
        (void)send();
        FAIL() << "it was not refused";
    } catch (const page::Refusal& refusal) {
        EXPECT_EQ(refusal.status(), 503);
        EXPECT_STREQ(refusal.what(), "The appliance's service does not answer, so nothing is "
                                     "measured now. Try again in a minute.");
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "vokpage: no collection can be started: cannot reach the service at /tmp/service: No "
              "such file or directory. Is vokserve running?\n");
}

} // namespace
