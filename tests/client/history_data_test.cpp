// SPDX-License-Identifier: MIT
//
// The history for programs.
#include <gtest/gtest.h>

#include "tests/client/household.h"

namespace {

using entries::kFile;
using history::Reader;

class HistoryData : public root::UntracedTest {
  protected:
    void SetUp() override
    {
        root::UntracedTest::SetUp();
        household::remember();
    }

    static history::KnownShare share(const std::string& name) { return *Reader(kFile).share(name); }
};

TEST_F(HistoryData, csvHasALineEachEntryOfTheDisk)
{
    EXPECT_EQ(renderHistoryCsv(Reader(kFile), household::lookedAt(2)),
              "published,capacity_kib,used_kib,free_kib\n"
              "2026-02-13T00:00:00Z,1000000,556000,444000\n"
              "2026-02-14T00:00:00Z,1000000,560000,440000\n");
}

TEST_F(HistoryData, csvHasALineEachEntryOfAShare)
{
    const std::string head = "share,published,used_kib,unit_kib,backup_state,backup_date\n";
    const Reader reader(kFile);
    EXPECT_EQ(renderHistoryCsv(reader, share("Films"), household::lookedAt(1)),
              head + "\"Films\",2026-02-14T00:00:00Z,260000,1000,1,2026-02-14\n");
    EXPECT_EQ(renderHistoryCsv(reader, share("Baby \"\xFF"), household::lookedAt(1)),
              head + "\"Baby \"\"\xFF\",2026-02-14T00:00:00Z,5000000,1000000,,\n");
    EXPECT_EQ(renderHistoryCsv(reader, share("Broken"), household::lookedAt(1)),
              head + "\"Broken\",2026-02-14T00:00:00Z,,,,\n");
}

TEST_F(HistoryData, jsonHasDiskAndShares)
{
    EXPECT_EQ(renderHistoryJson(Reader(kFile), household::lookedAt(1)), R"({
  "since": "2026-02-13T01:00:00Z",
  "history": {
    "first": "2026-01-05T00:00:00Z",
    "last": "2026-02-14T00:00:00Z",
    "begun_anew": null
  },
  "days_until_full": 110,
  "disk": [
    {
      "published": "2026-02-14T00:00:00Z",
      "capacity_kib": 1000000,
      "used_kib": 560000,
      "free_kib": 440000
    }
  ],
  "shares": [
    {
      "name": "Baby \"\ufffd",
      "name_hex": "426162792022ff",
      "fate": "kept",
      "first": "2026-02-07T00:00:00Z",
      "last": "2026-02-14T00:00:00Z",
      "former_names": [],
      "change_kib": 0,
      "change_uncertainty_kib": 999999
    },
    {
      "name": "Broken",
      "fate": "kept",
      "first": "2026-01-05T00:00:00Z",
      "last": "2026-02-14T00:00:00Z",
      "former_names": [],
      "change_kib": null,
      "change_uncertainty_kib": null
    },
    {
      "name": "Films",
      "fate": "kept",
      "first": "2026-01-05T00:00:00Z",
      "last": "2026-02-14T00:00:00Z",
      "former_names": [
        {
          "name": "Media",
          "renamed": "2026-02-04T00:00:00Z"
        }
      ],
      "change_kib": 4000,
      "change_uncertainty_kib": 999
    },
    {
      "name": "Old",
      "fate": "vanished",
      "first": "2026-01-05T00:00:00Z",
      "last": "2026-02-09T00:00:00Z",
      "former_names": [],
      "change_kib": null,
      "change_uncertainty_kib": null
    }
  ]
}
)");
}

TEST_F(HistoryData, jsonHasTheEntriesOfAShare)
{
    EXPECT_EQ(renderHistoryJson(Reader(kFile), share("Films"), household::lookedAt(1)), R"({
  "since": "2026-02-13T01:00:00Z",
  "history": {
    "first": "2026-01-05T00:00:00Z",
    "last": "2026-02-14T00:00:00Z",
    "begun_anew": null
  },
  "name": "Films",
  "fate": "kept",
  "first": "2026-01-05T00:00:00Z",
  "last": "2026-02-14T00:00:00Z",
  "former_names": [
    {
      "name": "Media",
      "renamed": "2026-02-04T00:00:00Z"
    }
  ],
  "change_kib": 4000,
  "change_uncertainty_kib": 999,
  "points": [
    {
      "published": "2026-02-14T00:00:00Z",
      "used_kib": 260000,
      "unit_kib": 1000,
      "backup_state": 1,
      "backup_date": "2026-02-14"
    }
  ]
}
)");
}

} // namespace
