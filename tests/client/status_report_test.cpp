// SPDX-License-Identifier: MIT
#include "client/status_report.h"

#include <cstdlib>
#include <gtest/gtest.h>

#include "tests/support/root.h"

namespace {

using client::Json;
using client::makeJson;
using client::renderJson;
using client::renderShares;
using client::renderTable;
using root::le16;
using view::PublishedStatus;
using view::readRecords;
using view::Situation;

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

config::Configuration configuration()
{
    config::Configuration all;
    all.goodStates = "1";
    all.failedStates = "2";
    all.words[2] = "disk full";
    return all;
}

/// What was published with a payload, empty for a collection without a list of shares.
Situation situation(const std::string& payload)
{
    using enum PublishedStatus::Result;
    setZone("UTC");
    Situation all;
    all.status.result = payload.empty() ? kNoList : kComplete;
    all.status.shares = view::readTable(payload).value();
    all.status.published = 1795253583; // 2026-11-21 09:33:03
    all.capacity = view::Capacity{500000000, 312000000, 188000000};
    all.listed = std::vector<std::string>{};
    all.now = all.status.published + 60;
    return all;
}

std::string tableOf(const Situation& situation)
{
    return renderTable(situation, configuration());
}

Json jsonOf(const Situation& situation)
{
    const std::string text = renderJson(situation, configuration());
    for (const char c : text) {
        EXPECT_TRUE(c == '\n' || (c >= ' ' && c <= '~'));
    }
    return Json::parse(text);
}

const std::string kTotal = "312 of 500 GB used, 188 GB free\n\n";
const std::string kPublished = "\nPublished 2026-11-21 09:33:03 UTC. No collection is running.\n\n";

TEST(StatusReport, tableLinesUpWhateverTheNames)
{
    EXPECT_EQ(
        tableOf(situation(table(4, record(604, "K111820261", "Documents") +
                                       record(9, "G111820261", "\xC3\x89t\xC3\xA9") +
                                       record(0, std::string(1, '\0') + "111820261", "a\x1B[31m") +
                                       record(12, "M112020260", "\xE5\x86\x99")))),
        kTotal +
            "SHARE         USED  STATE  LAST BACKUP\n"
            "Documents    604 K  1      2026-11-18\n"
            "\xC3\x89t\xC3\xA9            9 G  1      2026-11-18\n"
            "a\\u{1b}[31m      -  1      2026-11-18\n"
            "\xE5\x86\x99            12 M  0      2026-11-20\n" +
            kPublished +
            "Warning: a\\u{1b}[31m is not measured: its folder could not be measured. See whether "
            "it is in /share.\n");
}

TEST(StatusReport, statesHaveTheirWordsAndWhatIsUnreadableIsNotNone)
{
    EXPECT_EQ(
        tableOf(situation(table(3, record(604, "K111820262", "Documents") +
                                       record(9, "G000000001", "Media") +
                                       record(9, "G" + zeros(9), "Never")))),
        kTotal +
            "SHARE       USED  STATE          LAST BACKUP\n"
            "Documents  604 K  2 (disk full)  2026-11-18\n"
            "Media        9 G  unreadable     -\n"
            "Never        9 G  -              -\n" +
            kPublished +
            "Critical: The backup of Documents on 18 November 2026 has failed with state 2 "
            "(disk full): see why, and back up again.\n"
            "Warning: 1 of 3 shares has a backup report that cannot be read: Media. What to do: "
            "have the backup reported again.\n"
            "Warning: 1 of 3 shares has never been backed up: Never. What to do: set up a "
            "backup.\n");
}

TEST(StatusReport, nothingToSayIsSaid)
{
    EXPECT_EQ(tableOf(situation(table(1, record(604, "K111820261", "Documents")))),
              kTotal +
                  "SHARE       USED  STATE  LAST BACKUP\n"
                  "Documents  604 K  1      2026-11-18\n" +
                  kPublished + "Nothing needs attention.\n");
}

TEST(StatusReport, unknownCapacityIsNotZero)
{
    Situation all = situation(table(0, ""));
    all.capacity.reset();
    EXPECT_EQ(tableOf(all), "The disk's capacity is not known\n\nThere are no internal shares.\n" +
                                kPublished + "Nothing needs attention.\n");
    const Json json = jsonOf(all);
    for (const char* key : {"capacity_kib", "used_kib", "free_kib"}) {
        EXPECT_TRUE(json.at(key).is_null()) << key;
    }
}

TEST(StatusReport, sharesThatHaveToBeRenamedAreSaid)
{
    const Situation all =
        situation(table(1, record(0, std::string(1, '\0') + "111820261", "a`b\x1B")));
    EXPECT_EQ(tableOf(all),
              kTotal +
                  "SHARE      USED  STATE  LAST BACKUP\n"
                  "a`b\\u{1b}     -  1      2026-11-18\n" +
                  kPublished +
                  "Warning: a`b\\u{1b} is not measured: its name could run a command in a shell. "
                  "Rename it, without any of \" $ `, a backslash or a newline.\n");
    EXPECT_EQ(renderJson(all, configuration()), R"({
  "published": "2026-11-21T09:33:03Z",
  "collecting": false,
  "collecting_since": null,
  "capacity_kib": 500000000,
  "used_kib": 312000000,
  "free_kib": 188000000,
  "shares": [
    {
      "name": "a`b\u001b",
      "must_be_renamed": true,
      "used": null,
      "unit": null,
      "used_kib": null,
      "unit_kib": null,
      "backup_state": 1,
      "backup_date": "2026-11-18"
    }
  ],
  "unmeasured": [
    {
      "name": "a`b\u001b",
      "reason": "shell-character"
    }
  ],
  "findings": [
    {
      "level": "warning",
      "kind": "must-be-renamed",
      "shares": [
        "a`b\u001b"
      ],
      "sentence": "a`b\u001b is not measured: its name could run a command in a shell. Rename it, without any of \" $ `, a backslash or a newline."
    }
  ]
}
)");
}

TEST(StatusReport, everyReasonHasItsWord)
{
    Situation all = situation(table(1, record(0, zeros(10), "Gone")));
    all.listed = std::vector<std::string>{"a$", "b,c", "-d", "Gone\xFF"};
    EXPECT_EQ(jsonOf(all).at("unmeasured"), Json::parse(R"([
        {"name": "Gone", "reason": "failed"},
        {"name": "a$", "reason": "shell-character"},
        {"name": "b,c", "reason": "separator"},
        {"name": "-d", "reason": "first-character"}])"));
    std::string records;
    for (char c = 0; c < 53; ++c) {
        records += record(1, "K111820261", std::string(63, 'n') + static_cast<char>('A' + c));
    }
    all = situation(table(53, records));
    all.listed = std::vector<std::string>{"New\xFF"};
    EXPECT_EQ(jsonOf(all).at("unmeasured"), Json::parse(R"([
        {"name": "New\ufffd", "name_hex": "4e6577ff", "reason": "no-room"}])"));
}

TEST(StatusReport, runningCollectionIsSaidWithItsStart)
{
    Situation all = situation(table(0, ""));
    all.status.isCollecting = true;
    EXPECT_EQ(tableOf(all), kTotal + "There are no internal shares.\n\n"
                                     "Published 2026-11-21 09:33:03 UTC. A collection is "
                                     "running.\n\nNothing needs attention.\n");
    all.status.collectingSince = all.now - 3;
    EXPECT_EQ(tableOf(all), kTotal + "There are no internal shares.\n\n"
                                     "Published 2026-11-21 09:33:03 UTC. A collection is "
                                     "running since 09:34:00.\n\nNothing needs attention.\n");
    EXPECT_EQ(jsonOf(all).at("collecting"), Json(true));
    EXPECT_EQ(jsonOf(all).at("collecting_since"), Json("2026-11-21T09:34:00Z"));
    all.status.isCollecting = false;
    EXPECT_EQ(jsonOf(all).at("collecting_since"), Json()) << "interrupted";
}

TEST(StatusReport, failedCollectionIsSaid)
{
    EXPECT_EQ(tableOf(situation("")),
              kTotal + "The last collection could not get the list of shares.\n" + kPublished +
                  "Critical: The last collection could not get the list of shares: see that the "
                  "appliance's share script works, then start another one.\n");
}

TEST(StatusReport, timeIsLocal)
{
    const Situation all = situation("");
    setZone("XYZ-2:30");
    EXPECT_NE(tableOf(all).find("Published 2026-11-21 12:03:03 XYZ."), std::string::npos);
}

TEST(StatusReport, jsonSaysTheSameInAscii)
{
    EXPECT_EQ(jsonOf(situation(table(3, record(604, "K111820261", "\xC3\x89\x1B\x7F") +
                                            record(9, "G000000001", "odd") +
                                            record(0, zeros(10), "a\xC3"))))
                  .at("shares"),
              Json::parse(R"([
    {
      "name": "\u00c9\u001b\u007f",
      "used": 604,
      "unit": "K",
      "used_kib": 604,
      "unit_kib": 1,
      "backup_state": 1,
      "backup_date": "2026-11-18"
    },
    {
      "name": "odd",
      "used": 9,
      "unit": "G",
      "used_kib": 9000000,
      "unit_kib": 1000000,
      "backup_state": 1,
      "backup_date": null,
      "backup_unreadable": true
    },
    {
      "name": "a\ufffd",
      "name_hex": "61c3",
      "used": null,
      "unit": null,
      "used_kib": null,
      "unit_kib": null,
      "backup_state": null,
      "backup_date": null
    }
])"));
}

TEST(StatusReport, jsonTellsNoSharesFromNoList)
{
    const Json none = jsonOf(situation(table(0, "")));
    EXPECT_EQ(none.at("shares"), Json::array());
    EXPECT_EQ(none.at("unmeasured"), Json::array());
    EXPECT_EQ(none.at("findings"), Json::array());
    const Json failed = jsonOf(situation(""));
    EXPECT_EQ(failed.at("shares"), Json());
    EXPECT_EQ(failed.at("unmeasured"), Json());
    EXPECT_EQ(failed.at("findings").at(0).at("kind"), Json("no-list"));
}

// ---- Rows alone -------------------------------------------------------------------------------

TEST(StatusRecords, rowsAreATableOfTheirOwn)
{
    const auto rows = readRecords(
        table(2, record(604, "K111820261", "Documents") + record(9, "G" + zeros(9), "Media")));
    EXPECT_EQ(renderShares(*rows, configuration()), "SHARE       USED  STATE  LAST BACKUP\n"
                                                    "Documents  604 K  1      2026-11-18\n"
                                                    "Media        9 G  -      -\n");
    EXPECT_EQ(renderShares({}, configuration()), "SHARE  USED  STATE  LAST BACKUP\n");
}

TEST(StatusRecords, rowsAreJsonOfTheirOwn)
{
    const auto rows = readRecords(table(1, record(604, "K111820261", "Documents")));
    EXPECT_EQ(renderJson(makeJson(*rows)), R"([
  {
    "name": "Documents",
    "used": 604,
    "unit": "K",
    "used_kib": 604,
    "unit_kib": 1,
    "backup_state": 1,
    "backup_date": "2026-11-18"
  }
]
)");
    EXPECT_EQ(renderJson(makeJson({})), "[]\n");
}

} // namespace
