// SPDX-License-Identifier: MIT
#include "page/pages.h"

#include <ctime>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "sharestatus/status_format.h"
#include "tests/page/pasts.h"
#include "tests/page/visits.h"
#include "tests/support/collector.h"
#include "view/capacity.h"
#include "view/wording.h"

namespace {

using root::le16;
using visits::contains;
using visits::Made;

constexpr std::chrono::days kFourDays{4};

const std::string kReport = "<HDDInfo>\n<hddIndex>0</hddIndex>\n"
                            "<manufacturerVid>Maker</manufacturerVid>\n"
                            "<manufacturerPid>Model & more</manufacturerPid>\n"
                            "<modelInfo>S1</modelInfo>\n<modelCap>500.107</modelCap>\n"
                            "<modelDevName>sda</modelDevName>\n</HDDInfo>\n"
                            "<printerInfo>\n<printerManufacture>Maker</printerManufacture>\n"
                            "<modelInfo>S2</modelInfo>\n<printerName>Laser</printerName>\n"
                            "</printerInfo>\n";

std::string zeros(std::size_t count)
{
    return std::string(count, '\0');
}

/// A day as a record has it.
std::string recordDate(std::chrono::sys_days day)
{
    const std::string code = view::formatIsoDate(day);
    return code.substr(5, 2) + code.substr(8, 2) + code.substr(0, 4);
}

class OverviewPage : public root::Test {
  protected:
    void SetUp() override
    {
        root::Test::SetUp();
        std::filesystem::remove_all("/var/lib/vokcontrol");
        visits::stubSystemScript();
        root::writeFile("/stubs/tovGetSystemStatus", kReport);
        root::stub("pelparam", "echo 1");
        root::writeFile("/etc/pelconfig/system_var", "firsttime=0\n");
        root::writeFile("/etc/buildinfo.txt", "build <7>\n");
    }

    void TearDown() override
    {
        std::filesystem::remove("/etc/buildinfo.txt");
        std::filesystem::remove_all("/var/lib/vokcontrol");
        root::Test::TearDown();
    }

    static void publish(const std::string& payload)
    {
        root::writeFile(root::kStatusFile, sharestatus::encodeStatus(payload).text());
    }

    static void publishShares()
    {
        const std::string old = le16(900) + "K010220201Old & <gold>\n";
        const std::string fresh =
            le16(100) + "K" + recordDate(view::dayOf(std::time(nullptr)) - kFourDays) + "2Fresh\n";
        const std::string unknown = zeros(12) + "Unknown\n";
        publish(zeros(5) + le16(3) + zeros(3) + old + fresh + unknown);
    }

    static Made overview() { return visits::make(page::makeOverview, visits::get()); }
};

/// What stands between two marks.
std::string between(const std::string& text, const std::string& start, const std::string& end)
{
    const std::size_t from = text.find(start) + start.size();
    return text.substr(from, text.find(end, from) - from);
}

TEST_F(OverviewPage, beginsWithWhatNeedsAttention)
{
    publishShares();
    config::Configuration settings;
    settings.fullWarning = 100; // however full this machine is
    settings.fullCritical = 100;
    const page::Page made =
        visits::makeFor(visits::administrator(), page::makeOverview, visits::get(), settings);
    EXPECT_EQ(made.title, "Overview");
    const std::string body = made.body.text();
    EXPECT_TRUE(body.starts_with("<div id=\"findings\" data-live>\n"
                                 "<section class=\"notice warn\" "
                                 "aria-labelledby=\"attention\">\n"));
    EXPECT_EQ(between(body, "<ul class=\"findings\">", "</ul>"),
              R"(
<li><span class="badge ageing"><span aria-hidden="true">!</span> Warning</span> <bdi>1 of 3 shares has an old backup: Old &amp; &lt;gold&gt;. What to do: back up again.</bdi></li>
<li><span class="badge ageing"><span aria-hidden="true">!</span> Warning</span> <bdi>1 of 3 shares has never been backed up: Unknown. What to do: set up a backup.</bdi></li>
<li><span class="badge ageing"><span aria-hidden="true">!</span> Warning</span> <bdi>Unknown is not measured: its folder could not be measured. See whether it is in /<wbr>share.</bdi></li>
)");
}

TEST_F(OverviewPage, sortsTheSharesAsTheAddressSays)
{
    publishShares();
    const std::string first = R"(<tbody role="rowgroup">
<tr role="row"><th role="rowheader" scope="row" class="name"><a href="/cgi-bin/vokpage/share?name=)";
    EXPECT_EQ(between(overview().body, first, "\""), "Old%20%26%20%3Cgold%3E");
    page::Request request = visits::get();
    request.query = page::Form("sort=name");
    EXPECT_EQ(between(visits::make(page::makeOverview, request).body, first, "\""), "Fresh");
}

/// How often a text is in another one.
int count(const std::string& text, const std::string& part)
{
    int found = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++found;
    }
    return found;
}

const std::string kButton = "<button class=\"main\" id=\"measure\">Measure now</button>";

TEST_F(OverviewPage, administratorsMayMeasure)
{
    publishShares();
    page::Visitor other = visits::administrator();
    other.isAdministrator = false;
    EXPECT_EQ(count(overview().body, kButton), 1);
    EXPECT_EQ(count(visits::make(page::makeOverview, visits::get(), other).body, kButton), 0);
}

TEST_F(OverviewPage, collectionThatRunsIsShownAndNoOtherCanBeStarted)
{
    publishShares();
    const auto now = static_cast<std::uint32_t>(std::time(nullptr));
    const root::IdleCollector collector;
    root::writeFile(root::kSemaphoreFile, "\1" + zeros(1) + root::le32(now));
    page::Request request = visits::get();
    request.query = page::Form("wait=20");
    const page::Page page = visits::makeFor(visits::administrator(), page::makeOverview, request);
    EXPECT_TRUE(contains(page.body.text(), "<div id=\"collection\" role=\"status\">\n"
                                           "<p id=\"progress\" data-collecting>Measuring since "));
    EXPECT_EQ(count(page.body.text(), kButton), 0);
    EXPECT_EQ(page.head.text(),
              "<noscript><meta http-equiv=\"refresh\" "
              "content=\"20;url=/cgi-bin/vokpage?sort=size&amp;wait=40\"></noscript>\n");
}

TEST_F(OverviewPage, interruptedCollectionIsShownAndBlocksForTwoHours)
{
    publishShares();
    const auto now = static_cast<std::uint32_t>(std::time(nullptr));
    root::writeFile(root::kSemaphoreFile, "\1" + zeros(1) + root::le32(now - 7000));
    const page::Page page =
        visits::makeFor(visits::administrator(), page::makeOverview, visits::get());
    EXPECT_TRUE(contains(page.body.text(), "<div id=\"collection\" role=\"status\">\n"
                                           "<p>The last collection was interrupted.</p>\n"));
    EXPECT_TRUE(contains(page.body.text(), "The collection that began 1 hour ago was interrupted"));
    EXPECT_EQ(count(page.body.text(), kButton), 0);
    EXPECT_EQ(page.head.text(), "");
    root::writeFile(root::kSemaphoreFile, "\1" + zeros(1) + root::le32(now - 7300));
    EXPECT_EQ(count(overview().body, kButton), 1);
}

/// The part with the list, if there is none, and when it was published.
std::string emptyList(const std::string& words)
{
    return R"(<div id="share-list" data-live>
<div class="empty">
<p>)" + words +
           R"(</p>
<form method="post" action="/cgi-bin/vokpage/collection">
<input type="hidden" name="token" value=")" +
           visits::kToken + R"(">
<input type="hidden" name="sort" value="size">
)" + kButton +
           "\n</form>\n</div>\n</div>\n";
}

TEST_F(OverviewPage, buttonIsInThePlaceOfAMissingList)
{
    const auto expect = [](const std::string& words) {
        const std::string body = overview().body;
        EXPECT_TRUE(contains(body, emptyList(words))) << body;
        EXPECT_EQ(count(body, kButton), 1);
    };
    expect("Nothing has been published yet.");
    publish("");
    expect("The last collection could not get the list of shares.");
    publish(zeros(10));
    expect("There are no internal shares.");
    root::writeFile(root::kStatusFile, "damaged");
    expect("The share status is damaged. The next collection replaces it.");
}

TEST_F(OverviewPage, saysWhenTheStatusWasPublished)
{
    EXPECT_TRUE(contains(overview().body, "<div id=\"published\" data-live>\n</div>\n"));
    publishShares();
    EXPECT_TRUE(contains(overview().body, "<div id=\"published\" data-live>\n"
                                          "<p class=\"quiet\">Published just now, "));
}

/// A share that has grown for 20 days, and this machine's disk, which will be full in as many.
void rememberGrowth()
{
    constexpr unsigned kDays = 20;
    const view::Capacity now = view::readCapacity().value_or(view::Capacity());
    for (unsigned day = kDays + 1; day-- > 0;) {
        view::Capacity then = now;
        then.free += now.free / kDays * day;
        pasts::remember(static_cast<int>(day),
                        {pasts::share("Fresh", static_cast<std::uint16_t>(40 - day))}, then,
                        std::time(nullptr));
    }
}

TEST_F(OverviewPage, showsThePast)
{
    publishShares();
    rememberGrowth();
    const std::string body = overview().body;
    EXPECT_TRUE(contains(body, "</svg> <span class=\"quiet\">+20 MB in 20 days</span></td>"));
    EXPECT_TRUE(contains(body, "<p class=\"forecast\">If it goes on filling like this, the disk is "
                               "full in about 3 weeks.</p>\n"));
}

TEST_F(OverviewPage, isWholeWithoutAHistoryThatIsDamaged)
{
    publishShares();
    // Other parts show this machine's disk and clock, which go on meanwhile.
    const auto shares = [] {
        return between(overview().body, "<div id=\"share-list\" data-live>\n", "</section>");
    };
    const std::string before = shares();
    EXPECT_TRUE(contains(before, "<bdi>Unknown</bdi>"));
    rememberGrowth();
    EXPECT_NE(shares(), before);
    root::writeFile(history::kFile, "not a database");
    testing::internal::CaptureStderr();
    EXPECT_EQ(shares(), before);
    EXPECT_FALSE(contains(overview().body, "class=\"forecast\""));
    EXPECT_TRUE(
        contains(testing::internal::GetCapturedStderr(), "vokpage: the history cannot be read: "));
}

TEST_F(OverviewPage, showsDrivesAndPrinters)
{
    const Made made = overview();
    EXPECT_TRUE(contains(made.body, "<bdi>Maker Model &amp; more</bdi>"));
    EXPECT_TRUE(contains(made.body, "<bdi>Laser</bdi>"));
    EXPECT_TRUE(contains(made.script, "function tov_hdds()\n{\n\treturn 1;\n}\n"));
    EXPECT_TRUE(contains(made.script, "//<!-- getDriveInfos() found model:Model &amp; more-->\n"));
}

TEST_F(OverviewPage, tellsWhenDevicesAreNotKnown)
{
    root::writeFile("/stubs/tovGetSystemStatus", "");
    EXPECT_TRUE(contains(overview().body, "Nothing is attached."));
    root::stub("php", "exit 1");
    EXPECT_TRUE(contains(overview().body, "The appliance does not say what is attached."));
}

TEST_F(OverviewPage, showsNetworkAndSystem)
{
    const std::string body = overview().body;
    EXPECT_TRUE(contains(body, "<dt>Address</dt><dd><bdi>127.0.0.1</bdi></dd>"));
    EXPECT_TRUE(contains(body, "<dt>Network mask</dt><dd><bdi>255.0.0.0</bdi></dd>"));
    EXPECT_TRUE(contains(body, R"(<dt>Gateway</dt><dd><span class="quiet">not known</span></dd>)"));
    EXPECT_TRUE(contains(body, "<bdi>automatic (DHCP)</bdi>"));
    EXPECT_TRUE(contains(body, "<dt>Build</dt><dd><bdi>build &lt;7&gt;</bdi></dd>"));
    EXPECT_TRUE(contains(body, "<dt>Remote sync</dt><dd><bdi>off</bdi></dd>"));
}

TEST_F(OverviewPage, invitesToTheSetupUntilItIsDone)
{
    EXPECT_FALSE(contains(overview().body, "has not been set up"));
    root::writeFile("/etc/pelconfig/system_var", "firsttime=1\n");
    EXPECT_TRUE(contains(overview().body, "has not been set up"));
    root::writeFile("/etc/pelconfig/system_var", "");
    EXPECT_TRUE(contains(overview().body, "has not been set up"));
}

} // namespace
