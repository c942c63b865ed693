// SPDX-License-Identifier: MIT
#include "client/status_report.h"

#include <cstdlib>
#include <gtest/gtest.h>

#include "tests/support/root.h"

namespace {

using client::makeJson;
using client::renderJson;
using client::renderShares;
using client::renderTable;
using root::le16;
using view::PublishedStatus;
using view::readRecords;

std::string zeros(std::size_t count)
{
    return std::string(count, '\0');
}

std::string table(unsigned count, const std::string& records)
{
    return zeros(5) + le16(count) + zeros(3) + records;
}

std::string record(unsigned used, const std::string& unitDateState, const std::string& name)
{
    return le16(used) + unitDateState + name + "\n";
}

void setZone(const char* zone)
{
    ::setenv("TZ", zone, 1);
    ::tzset();
}

/// What was published with a payload, empty for a collection without a list of shares.
PublishedStatus publishedStatus(const std::string& payload)
{
    using enum PublishedStatus::Result;
    setZone("UTC");
    PublishedStatus status;
    status.result = payload.empty() ? kNoList : kComplete;
    status.shares = view::readTable(payload).value();
    status.published = 1795253583; // 2026-11-21 09:33:03
    return status;
}

TEST(StatusReport, tableLinesUpWhateverTheNames)
{
    const PublishedStatus status = publishedStatus(table(
        4, record(604, "K111820261", "Documents") + record(9, "G" + zeros(9), "\xC3\x89t\xC3\xA9") +
               record(0, zeros(10), "a\x1B[31m") + record(12, "M112020260", "\xE5\x86\x99")));
    EXPECT_EQ(renderTable(status),
              "SHARE         USED  STATE  LAST BACKUP\n"
              "Documents    604 K  1      2026-11-18\n"
              "\xC3\x89t\xC3\xA9            9 G  -      -\n"
              "a\\u{1b}[31m      -  -      -\n"
              "\xE5\x86\x99            12 M  0      2026-11-20\n"
              "\n"
              "Published 2026-11-21 09:33:03 UTC. No collection is running.\n");
}

TEST(StatusReport, sharesThatHaveToBeRenamedAreSaid)
{
    const PublishedStatus status = publishedStatus(
        table(3, record(0, zeros(10), "a`b\x1B") + record(604, "K" + zeros(9), "Tom & Jerry's") +
                     record(0, zeros(10), "$x")));
    EXPECT_EQ(renderTable(status),
              "SHARE           USED  STATE  LAST BACKUP\n"
              "a`b\\u{1b}          -  -      -\n"
              "Tom & Jerry's  604 K  -      -\n"
              "$x                 -  -      -\n"
              "\n"
              "Rename the share a`b\\u{1b}: it is not measured, as its name could run in a shell.\n"
              "Rename the share $x: it is not measured, as its name could run in a shell.\n"
              "Published 2026-11-21 09:33:03 UTC. No collection is running.\n");
    EXPECT_EQ(renderJson(status), R"({
  "published": "2026-11-21T09:33:03Z",
  "collecting": false,
  "shares": [
    {
      "name": "a`b\u001b",
      "must_be_renamed": true,
      "used": null,
      "unit": null,
      "backup_state": null,
      "backup_date": null
    },
    {
      "name": "Tom & Jerry's",
      "used": 604,
      "unit": "K",
      "backup_state": null,
      "backup_date": null
    },
    {
      "name": "$x",
      "must_be_renamed": true,
      "used": null,
      "unit": null,
      "backup_state": null,
      "backup_date": null
    }
  ]
}
)");
}

TEST(StatusReport, runningCollectionIsSaid)
{
    PublishedStatus status = publishedStatus(table(0, ""));
    status.isCollecting = true;
    EXPECT_EQ(renderTable(status),
              "There are no internal shares.\n\n"
              "Published 2026-11-21 09:33:03 UTC. A collection is running now.\n");
}

TEST(StatusReport, failedCollectionIsSaid)
{
    EXPECT_EQ(renderTable(publishedStatus("")),
              "The last collection could not get the list of shares.\n\n"
              "Published 2026-11-21 09:33:03 UTC. No collection is running.\n");
}

TEST(StatusReport, timeIsLocal)
{
    PublishedStatus status = publishedStatus("");
    setZone("XYZ-2:30");
    EXPECT_NE(renderTable(status).find("Published 2026-11-21 12:03:03 XYZ."), std::string::npos);
}

TEST(StatusReport, jsonSaysTheSameInAscii)
{
    const PublishedStatus status = publishedStatus(
        table(2, record(604, "K111820261", "\xC3\x89\x1B\x7F") + record(0, zeros(10), "a\xC3")));
    EXPECT_EQ(renderJson(status), R"({
  "published": "2026-11-21T09:33:03Z",
  "collecting": false,
  "shares": [
    {
      "name": "\u00c9\u001b\u007f",
      "used": 604,
      "unit": "K",
      "backup_state": 1,
      "backup_date": "2026-11-18"
    },
    {
      "name": "a\ufffd",
      "name_hex": "61c3",
      "used": null,
      "unit": null,
      "backup_state": null,
      "backup_date": null
    }
  ]
}
)");
}

TEST(StatusReport, jsonTellsNoSharesFromNoList)
{
    EXPECT_EQ(renderJson(publishedStatus(table(0, ""))), R"({
  "published": "2026-11-21T09:33:03Z",
  "collecting": false,
  "shares": []
}
)");
    EXPECT_EQ(renderJson(publishedStatus("")), R"({
  "published": "2026-11-21T09:33:03Z",
  "collecting": false,
  "shares": null
}
)");
}

// ---- Rows alone -------------------------------------------------------------------------------

TEST(StatusRecords, rowsAreATableOfTheirOwn)
{
    const auto rows = readRecords(
        table(2, record(604, "K111820261", "Documents") + record(9, "G" + zeros(9), "Media")));
    EXPECT_EQ(renderShares(*rows), "SHARE       USED  STATE  LAST BACKUP\n"
                                   "Documents  604 K  1      2026-11-18\n"
                                   "Media        9 G  -      -\n");
    EXPECT_EQ(renderShares({}), "SHARE  USED  STATE  LAST BACKUP\n");
}

TEST(StatusRecords, rowsAreJsonOfTheirOwn)
{
    const auto rows = readRecords(table(1, record(604, "K111820261", "Documents")));
    EXPECT_EQ(renderJson(makeJson(*rows)), R"([
  {
    "name": "Documents",
    "used": 604,
    "unit": "K",
    "backup_state": 1,
    "backup_date": "2026-11-18"
  }
]
)");
    EXPECT_EQ(renderJson(makeJson({})), "[]\n");
}

} // namespace
