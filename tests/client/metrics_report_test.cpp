// SPDX-License-Identifier: MIT
#include "client/metrics_report.h"

#include "sharestatus/status_format.h"
#include "tests/support/root.h"

namespace {

using client::renderMetrics;
using view::ShareRow;

constexpr std::time_t kPublished = 2079250383;

const std::string kCollecting = "# TYPE vokcontrol_collecting gauge\n"
                                "# HELP vokcontrol_collecting 1 while a collection runs, otherwise "
                                "0.\n";
const std::string kUsed = "# TYPE vokcontrol_share_used_bytes gauge\n"
                          "# UNIT vokcontrol_share_used_bytes bytes\n"
                          "# HELP vokcontrol_share_used_bytes Space that a share uses, cut off to "
                          "the unit of the published status.\n";

std::string findings(int warning, int critical)
{
    return "# TYPE vokcontrol_findings gauge\n"
           "# HELP vokcontrol_findings How many findings need attention, by level.\n"
           "vokcontrol_findings{level=\"warning\"} " +
           std::to_string(warning) + "\nvokcontrol_findings{level=\"critical\"} " +
           std::to_string(critical) + "\n# EOF\n";
}

view::Situation published(std::vector<ShareRow> shares)
{
    view::Situation situation;
    situation.status.result = view::PublishedStatus::Result::kComplete;
    situation.status.published = kPublished;
    situation.status.shares = std::move(shares);
    situation.now = kPublished + 60;
    return situation;
}

ShareRow row(const std::string& name, std::uint16_t used = 1)
{
    return {.name = name, .used = view::Space{used, 'K'}, .backupState = {}, .backupDay = {}};
}

/// The lines of the space that shares use.
std::string usedLines(std::vector<ShareRow> shares)
{
    const std::string text = renderMetrics(published(std::move(shares)), {});
    const std::size_t start = text.find(kUsed) + kUsed.size();
    return text.substr(start, text.find("# TYPE", start) - start);
}

TEST(Metrics, haveAllThatIsKnown)
{
    view::Situation situation = published({row("Media", 604), row("New")});
    situation.capacity = view::Capacity{5000000000, 4900000000, 100000000};
    situation.status.isCollecting = true;
    situation.status.shares[0].backupState = 3;
    situation.status.shares[0].backupDay = std::chrono::sys_days(std::chrono::days(20000));
    situation.status.shares[0].report = view::BackupReport::kRead;
    situation.status.shares[1].used = {};
    config::Configuration configuration;
    configuration.failedStates = "3";
    EXPECT_EQ(
        renderMetrics(situation, configuration),
        "# TYPE vokcontrol_capacity_bytes gauge\n"
        "# UNIT vokcontrol_capacity_bytes bytes\n"
        "# HELP vokcontrol_capacity_bytes Size of the file system of the shares.\n"
        "vokcontrol_capacity_bytes 5120000000000\n"
        "# TYPE vokcontrol_free_bytes gauge\n"
        "# UNIT vokcontrol_free_bytes bytes\n"
        "# HELP vokcontrol_free_bytes Space that can still be written there.\n"
        "vokcontrol_free_bytes 102400000000\n"
        "# TYPE vokcontrol_published_timestamp_seconds gauge\n"
        "# UNIT vokcontrol_published_timestamp_seconds seconds\n"
        "# HELP vokcontrol_published_timestamp_seconds When the share status was published.\n"
        "vokcontrol_published_timestamp_seconds 2079250383\n" +
            kCollecting + "vokcontrol_collecting 1\n" + kUsed +
            "vokcontrol_share_used_bytes{share=\"Media\"} 618496\n"
            "# TYPE vokcontrol_share_backup_timestamp_seconds gauge\n"
            "# UNIT vokcontrol_share_backup_timestamp_seconds seconds\n"
            "# HELP vokcontrol_share_backup_timestamp_seconds Start of the day of a share's last "
            "backup, in UTC.\n"
            "vokcontrol_share_backup_timestamp_seconds{share=\"Media\"} 1728000000\n"
            "# TYPE vokcontrol_share_backup_state gauge\n"
            "# HELP vokcontrol_share_backup_state Digit that the backup client reported for a "
            "share.\n"
            "vokcontrol_share_backup_state{share=\"Media\"} 3\n" +
            findings(2, 2));
}

TEST(Metrics, leaveOutWhatIsNotKnown)
{
    view::Situation situation;
    situation.now = kPublished;
    EXPECT_EQ(renderMetrics(situation, {}),
              kCollecting + "vokcontrol_collecting 0\n" + findings(1, 0));
}

TEST(Metrics, escapeNames)
{
    EXPECT_EQ(usedLines({row("a\"b\\c\nd"), row("\xC3\xA9\xFF{},=")}),
              "vokcontrol_share_used_bytes{share=\"a\\\"b\\\\c\\nd\"} 1024\n"
              "vokcontrol_share_used_bytes{share=\"\xC3\xA9\\\\xff{},=\"} 1024\n");
}

TEST(Metrics, haveEachLabelOnce)
{
    EXPECT_EQ(usedLines({row("\xFF", 1), row("\\xff", 2), row("a", 3), row("a", 4)}),
              "vokcontrol_share_used_bytes{share=\"\\\\xff\"} 1024\n"
              "vokcontrol_share_used_bytes{share=\"a\"} 3072\n");
}

TEST(Metrics, haveTheRequestsOfTheService)
{
    std::string usage;
    for (int slot = 0; slot < 20; ++slot) {
        usage +=
            "ab" + std::string(1, static_cast<char>('a' + slot)) + "1" + root::le32(slot * 1000U);
    }
    usage += root::zeros(4) + root::le32(0xFFFFFFFF);
    const std::string text = renderMetrics({}, {}, usage);
    const std::string head = "# HELP vokcontrol_requests_total How many requests the service has "
                             "received, as it saved last.\n"
                             "vokcontrol_requests_total{command=\"aba1\"} 0\n"
                             "vokcontrol_requests_total{command=\"abb1\"} 1000\n";
    EXPECT_NE(text.find(head), std::string::npos) << text;
    EXPECT_NE(text.find("vokcontrol_requests_total{command=\"abt1\"} 19000\n"
                        "vokcontrol_requests_total{command=\"other\"} 4294967295\n"
                        "# TYPE vokcontrol_findings"),
              std::string::npos)
        << text;
    EXPECT_EQ(renderMetrics({}, {}, usage + "x"), renderMetrics({}, {}));
    EXPECT_EQ(renderMetrics({}, {}, usage.substr(1)), renderMetrics({}, {}));
}

TEST(Metrics, haveTheTimesOfRequestsAsSums)
{
    const std::string text = renderMetrics(
        {}, {}, {}, "lstu 2 5000000030\nother 1 0\nno line\nwall 1 2 3\nwall -x 1\n\n");
    const std::string expected =
        "# TYPE vokcontrol_request_seconds summary\n"
        "# UNIT vokcontrol_request_seconds seconds\n"
        "# HELP vokcontrol_request_seconds How long requests have taken since the service began, "
        "by command.\n"
        "vokcontrol_request_seconds_sum{command=\"lstu\"} 5000000.030000\n"
        "vokcontrol_request_seconds_count{command=\"lstu\"} 2\n"
        "vokcontrol_request_seconds_sum{command=\"other\"} 0.000000\n"
        "vokcontrol_request_seconds_count{command=\"other\"} 1\n";
    const std::size_t start = text.find("# TYPE vokcontrol_request_seconds");
    ASSERT_NE(start, text.npos);
    EXPECT_EQ(text.substr(start, expected.size()), expected);
    EXPECT_EQ(text.substr(0, start) + text.substr(start + expected.size()), renderMetrics({}, {}));
    EXPECT_EQ(renderMetrics({}, {}, {}, "no line\n"), renderMetrics({}, {}));
}

} // namespace
