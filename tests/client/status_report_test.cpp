// SPDX-License-Identifier: MIT
#include "client/status_report.h"

#include <cstdlib>
#include <gtest/gtest.h>

#include "tests/support/root.h"

namespace {

using client::makeJson;
using client::readRecords;
using client::readReport;
using client::renderJson;
using client::renderShares;
using client::renderTable;
using client::StatusReport;
using root::le16;

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

/// A report of one share.
client::ShareRow readOne(const std::string& unitDateState)
{
    const auto report = readReport(table(1, record(5, unitDateState, "x")));
    return report.value().shares.at(0);
}

void setZone(const char* zone)
{
    ::setenv("TZ", zone, 1);
    ::tzset();
}

StatusReport publishedReport(const std::string& payload)
{
    setZone("UTC");
    StatusReport report = readReport(payload).value();
    report.published = 1795253583; // 2026-11-21 09:33:03
    return report;
}

TEST(StatusReport, recordsBecomeRows)
{
    const auto report = readReport(
        table(2, record(604, "K111820261", "Documents") + record(65535, "G" + zeros(9), "Media")));
    ASSERT_TRUE(report);
    EXPECT_TRUE(report->isListed);
    ASSERT_EQ(report->shares.size(), 2U);
    EXPECT_EQ(report->shares[0].name, "Documents");
    EXPECT_EQ(report->shares[0].used->value, 604);
    EXPECT_EQ(report->shares[0].used->unit, 'K');
    EXPECT_EQ(report->shares[0].backupState, 1);
    EXPECT_EQ(report->shares[0].backupDate, "2026-11-18");
    EXPECT_EQ(report->shares[1].name, "Media");
    EXPECT_EQ(report->shares[1].used->value, 65535);
    EXPECT_EQ(report->shares[1].used->unit, 'G');
    EXPECT_FALSE(report->shares[1].backupState);
    EXPECT_FALSE(report->shares[1].backupDate);
}

TEST(StatusReport, payloadThatIsNoTableIsRefused)
{
    EXPECT_FALSE(readReport("short"));
    EXPECT_FALSE(readReport(table(1, "")));
    EXPECT_FALSE(readReport(table(0, "x")));
    EXPECT_FALSE(readReport(table(1, zeros(13))));
}

TEST(StatusReport, emptyPayloadIsAListThatCouldNotBeHad)
{
    EXPECT_FALSE(readReport("")->isListed);
    EXPECT_TRUE(readReport(table(0, ""))->isListed);
}

TEST(StatusReport, unmeasuredShareUsesNothingKnown)
{
    EXPECT_FALSE(readOne(zeros(10)).used);
    EXPECT_FALSE(readOne("T" + zeros(9)).used);
    EXPECT_TRUE(readOne("M" + zeros(9)).used);
}

TEST(StatusReport, dateMustBeADayOfTheCalendar)
{
    EXPECT_EQ(readOne("K022920281").backupDate, "2028-02-29");
    EXPECT_EQ(readOne("K123199991").backupDate, "9999-12-31");
    for (const char* date : {"02292027", "13012026", "00012026", "01002026", "01322026", "00000000",
                             "1121202x", "o backup", "\x1B[2J    "}) {
        EXPECT_FALSE(readOne(std::string("K") + date + "1").backupDate) << date;
    }
}

TEST(StatusReport, stateMustBeADigit)
{
    EXPECT_EQ(readOne("K112120260").backupState, 0);
    EXPECT_EQ(readOne("K112120269").backupState, 9);
    for (const char* state : {"b", "/", ":", "\x1B", "\xFF"}) {
        EXPECT_FALSE(readOne(std::string("K11212026") + state).backupState) << state;
    }
}

TEST(StatusReport, tableLinesUpWhateverTheNames)
{
    const StatusReport report = publishedReport(table(
        4, record(604, "K111820261", "Documents") + record(9, "G" + zeros(9), "\xC3\x89t\xC3\xA9") +
               record(0, zeros(10), "a\x1B[31m") + record(12, "M112020260", "\xE5\x86\x99")));
    EXPECT_EQ(renderTable(report),
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
    const StatusReport report = publishedReport(
        table(3, record(0, zeros(10), "a`b\x1B") + record(604, "K" + zeros(9), "Tom & Jerry's") +
                     record(0, zeros(10), "$x")));
    EXPECT_EQ(renderTable(report),
              "SHARE           USED  STATE  LAST BACKUP\n"
              "a`b\\u{1b}          -  -      -\n"
              "Tom & Jerry's  604 K  -      -\n"
              "$x                 -  -      -\n"
              "\n"
              "Rename the share a`b\\u{1b}: it is not measured, as its name could run in a shell.\n"
              "Rename the share $x: it is not measured, as its name could run in a shell.\n"
              "Published 2026-11-21 09:33:03 UTC. No collection is running.\n");
    EXPECT_EQ(renderJson(report), R"({
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
    StatusReport report = publishedReport(table(0, ""));
    report.isCollecting = true;
    EXPECT_EQ(renderTable(report),
              "There are no internal shares.\n\n"
              "Published 2026-11-21 09:33:03 UTC. A collection is running now.\n");
}

TEST(StatusReport, failedCollectionIsSaid)
{
    EXPECT_EQ(renderTable(publishedReport("")),
              "The last collection could not get the list of shares.\n\n"
              "Published 2026-11-21 09:33:03 UTC. No collection is running.\n");
}

TEST(StatusReport, timeIsLocal)
{
    StatusReport report = publishedReport("");
    setZone("XYZ-2:30");
    EXPECT_NE(renderTable(report).find("Published 2026-11-21 12:03:03 XYZ."), std::string::npos);
}

TEST(StatusReport, jsonSaysTheSameInAscii)
{
    const StatusReport report = publishedReport(
        table(2, record(604, "K111820261", "\xC3\x89\x1B\x7F") + record(0, zeros(10), "a\xC3")));
    EXPECT_EQ(renderJson(report), R"({
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
    EXPECT_EQ(renderJson(publishedReport(table(0, ""))), R"({
  "published": "2026-11-21T09:33:03Z",
  "collecting": false,
  "shares": []
}
)");
    EXPECT_EQ(renderJson(publishedReport("")), R"({
  "published": "2026-11-21T09:33:03Z",
  "collecting": false,
  "shares": null
}
)");
}

// ---- Records alone ----------------------------------------------------------------------------

TEST(StatusRecords, headersCountDoesNotMatter)
{
    const std::string records =
        record(604, "K111820261", "Documents") + record(10, "G" + zeros(9), "Media");
    for (const unsigned count : {0U, 1U, 2U, 3U, 10U, 256U, 65535U}) {
        const auto rows = readRecords("gubr " + le16(count) + le16(500) + "\n" + records);
        ASSERT_TRUE(rows) << count;
        ASSERT_EQ(rows->size(), 2U) << count;
        EXPECT_EQ(rows->at(0).name, "Documents");
        EXPECT_EQ(rows->at(0).used->value, 604);
        EXPECT_EQ(rows->at(0).used->unit, 'K');
        EXPECT_EQ(rows->at(0).backupState, 1);
        EXPECT_EQ(rows->at(0).backupDate, "2026-11-18");
        EXPECT_EQ(rows->at(1).name, "Media");
        EXPECT_EQ(rows->at(1).used->value, 10);
        EXPECT_FALSE(rows->at(1).backupState);
        EXPECT_FALSE(rows->at(1).backupDate);
    }
}

TEST(StatusRecords, headerAloneHasNone)
{
    for (const unsigned count : {0U, 1U, 65535U}) {
        const auto rows = readRecords(table(count, ""));
        ASSERT_TRUE(rows) << count;
        EXPECT_TRUE(rows->empty()) << count;
    }
}

TEST(StatusRecords, headerCutAnywhereIsRefused)
{
    const std::string header = "gubr " + le16(1) + le16(500) + "\n";
    for (std::size_t size = 0; size < header.size(); ++size) {
        EXPECT_FALSE(readRecords(header.substr(0, size))) << size;
    }
}

TEST(StatusRecords, recordsThatDoNotEndWithThePayloadAreRefused)
{
    const std::string first = table(2, record(604, "K111820261", "Documents"));
    const std::string second = record(5, "M111820262", "Media");
    for (std::size_t size = 1; size < second.size(); ++size) {
        EXPECT_FALSE(readRecords(first + second.substr(0, size))) << size;
    }
    EXPECT_TRUE(readRecords(first + second));
    EXPECT_FALSE(readRecords(first + second + "\n"));
    EXPECT_FALSE(readRecords(table(1, record(5, "M111820262", std::string(65, 'n')))));
}

TEST(StatusRecords, asManyAsAnAnswerHolds)
{
    std::string records;
    for (int i = 0; i < 314; ++i) {
        records += record(1, "K111820261", "");
    }
    const auto rows = readRecords(table(0, records));
    ASSERT_TRUE(rows);
    EXPECT_EQ(rows->size(), 314U);
}

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
