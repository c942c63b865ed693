// SPDX-License-Identifier: MIT
#include "page/pages.h"

#include <ctime>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "sharestatus/status_format.h"
#include "tests/page/visits.h"
#include "tests/support/collector.h"
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
        visits::stubSystemScript();
        root::writeFile("/stubs/tovGetSystemStatus", kReport);
        root::stub("pelparam", "echo 1");
        root::writeFile("/etc/pelconfig/system_var", "firsttime=0\n");
        root::writeFile("/etc/buildinfo.txt", "build <7>\n");
    }

    void TearDown() override
    {
        std::filesystem::remove("/etc/buildinfo.txt");
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

TEST_F(OverviewPage, showsSharesWithSpaceAndBackup)
{
    publishShares();
    const Made made = overview();
    EXPECT_EQ(made.title, "Overview");
    EXPECT_TRUE(contains(made.body, "<h3><bdi>Old &amp; &lt;gold&gt;</bdi></h3>"));
    EXPECT_TRUE(contains(made.body, R"(<rect width="900" height="10"/>)"));
    EXPECT_TRUE(contains(made.body, R"(<b>900 KB</b> <span class="quiet">90 %</span>)"));
    EXPECT_TRUE(
        contains(made.body,
                 R"(<span class="badge old"><span aria-hidden="true">&#10005;</span> Old</span>)"));
    EXPECT_TRUE(contains(made.body, "2 January 2020, state 1"));
    EXPECT_TRUE(contains(made.body, R"(<span class="badge recent">)"));
    EXPECT_TRUE(contains(made.body, "4 days ago"));
    EXPECT_TRUE(contains(made.body, "Space not known"));
    EXPECT_TRUE(contains(made.body, "no backup is known"));
}

TEST_F(OverviewPage, saysWhichShareHasToBeRenamed)
{
    publish(zeros(5) + le16(2) + zeros(3) + zeros(12) + "$(reboot)\n" + zeros(12) +
            "Tom & Jerry\n");
    const std::string hint =
        R"(<p class="space"><strong>Rename this share</strong> <span class="quiet">)"
        "It is not measured, as its name could run in a shell</span></p>";
    const std::string unknown =
        R"(<p class="space"><span class="quiet">Space not known</span></p>)";
    const Made made = overview();
    EXPECT_TRUE(contains(made.body, "<li><h3><bdi>$(reboot)</bdi></h3>" + hint));
    EXPECT_TRUE(contains(made.body, "<li><h3><bdi>Tom &amp; Jerry</bdi></h3>" + unknown));
}

TEST_F(OverviewPage, countsAtAGlance)
{
    publishShares();
    const std::string body = overview().body;
    EXPECT_TRUE(contains(body, R"(<dd>1.0 MB <span class="quiet">in 3 shares</span></dd>)"));
    EXPECT_TRUE(
        contains(body, R"(<dt>Recent backups</dt><dd>1 <span class="quiet">of 3</span></dd>)"));
    EXPECT_TRUE(contains(body, "<dt>Internal disks</dt><dd>1</dd>"));
    EXPECT_TRUE(contains(body, "<dt>USB devices</dt><dd>1</dd>"));
}

TEST_F(OverviewPage, barOfASmallShareCanBeSeen)
{
    publish(zeros(5) + le16(2) + zeros(3) + le16(1) + "G" + zeros(9) + "Large\n" + le16(1) + "K" +
            zeros(9) + "Small\n");
    const std::string body = overview().body;
    EXPECT_TRUE(contains(body, R"(<rect width="999" height="10"/>)"));
    EXPECT_TRUE(contains(body, R"(<rect width="5" height="10"/>)"));
    EXPECT_TRUE(contains(body, "under 1 %"));
}

TEST_F(OverviewPage, tellsWhenSharesWereMeasuredAndWhetherThatGoesOn)
{
    publishShares();
    EXPECT_TRUE(contains(overview().body, "Measured just now ("));
    EXPECT_TRUE(contains(overview().body, "No collection is running."));
    const auto now = static_cast<std::uint32_t>(std::time(nullptr));
    root::IdleCollector collector;
    root::writeFile(root::kSemaphoreFile, "\1" + zeros(1) + root::le32(now));
    EXPECT_TRUE(
        contains(overview().body, "<strong data-collecting>A collection is running now.</strong>"));
    collector.end();
    const std::string body = overview().body;
    EXPECT_TRUE(contains(body, "The last collection was interrupted."));
    EXPECT_FALSE(contains(body, "data-collecting"));
}

TEST_F(OverviewPage, tellsWhyThereAreNoShares)
{
    EXPECT_TRUE(contains(overview().body, "No share has been measured yet."));
    publish("");
    EXPECT_TRUE(contains(overview().body, "could not get the list of shares"));
    publish(zeros(10));
    EXPECT_TRUE(contains(overview().body, "There are no internal shares."));
    root::writeFile(root::kStatusFile, "damaged");
    EXPECT_TRUE(contains(overview().body, "The share status is damaged."));
}

TEST_F(OverviewPage, showsDrivesAndPrinters)
{
    const Made made = overview();
    EXPECT_TRUE(contains(made.body,
                         "<bdi>Maker Model &amp; more</bdi></h3><p class=\"quiet\">Internal "
                         "disk <bdi>sda</bdi><br>Serial number <bdi>S1</bdi></p>"));
    EXPECT_TRUE(contains(made.body, R"(<p class="capacity"><bdi>500.10</bdi> GB</p>)"));
    EXPECT_TRUE(contains(made.body, "<bdi>Laser</bdi></h3><p class=\"quiet\">USB printer by "
                                    "<bdi>Maker</bdi><br>Serial number <bdi>S2</bdi></p>"));
    EXPECT_TRUE(contains(made.script, "function tov_hdds()\n{\n\treturn 1;\n}\n"));
    EXPECT_TRUE(contains(made.script, "//<!-- getDriveInfos() found model:Model &amp; more-->\n"));
}

TEST_F(OverviewPage, tellsWhenDevicesAreNotKnown)
{
    root::writeFile("/stubs/tovGetSystemStatus", "");
    EXPECT_TRUE(contains(overview().body, "Nothing is attached."));
    root::stub("php", "exit 1");
    EXPECT_TRUE(contains(overview().body, "The appliance does not tell what is attached."));
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
