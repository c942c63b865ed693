// SPDX-License-Identifier: MIT
#include "view/share_row.h"

#include <gtest/gtest.h>

#include "tests/support/root.h"

namespace {

using root::le16;
using view::readRecords;
using view::readTable;
using view::ShareRow;

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

/// A row with all that it holds: "Documents 604 K 1 2026-11-18".
std::string describe(const ShareRow& row)
{
    const std::string used =
        row.used ? std::to_string(row.used->value) + " " + row.used->unit : "-";
    return row.name + " " + used + " " +
           (row.backupState ? std::to_string(*row.backupState) : "-") + " " +
           (row.backupDay ? view::formatIsoDate(*row.backupDay) : "-");
}

using Lines = std::vector<std::string>;

/// The rows of a table or of records; "refused" alone if there are none to be had.
Lines describe(const std::optional<std::vector<ShareRow>>& rows)
{
    if (!rows) {
        return {"refused"};
    }
    Lines lines;
    for (const ShareRow& row : *rows) {
        lines.push_back(describe(row));
    }
    return lines;
}

const Lines kRefused = {"refused"};

/// The one row of a table.
std::string readOne(const std::string& unitDateState)
{
    return describe(readTable(table(1, record(5, unitDateState, "x")))).at(0);
}

// ---- Tables -----------------------------------------------------------------------------------

TEST(ShareRows, areReadFieldByField)
{
    EXPECT_EQ(describe(readTable(table(2, record(604, "K111820261", "Documents") +
                                              record(65535, "G" + zeros(9), "Media")))),
              (Lines{"Documents 604 K 1 2026-11-18", "Media 65535 G - -"}));
    EXPECT_EQ(describe(readTable(table(0, ""))), Lines());
    EXPECT_EQ(describe(readTable("")), Lines());
}

TEST(ShareRows, ofAPayloadThatIsNoTableAreRefused)
{
    const std::string whole = record(604, "K111820261", "Documents");
    for (const std::string& payload :
         {std::string("short"), std::string("no table"), table(1, ""), table(0, "x"),
          table(1, zeros(13)), table(2, whole), table(1, whole + "x")}) {
        EXPECT_EQ(describe(readTable(payload)), kRefused) << payload;
    }
}

TEST(ShareRows, unmeasuredShareUsesNothingKnown)
{
    EXPECT_EQ(readOne(zeros(10)), "x - - -");
    EXPECT_EQ(readOne("T" + zeros(9)), "x - - -");
    EXPECT_EQ(readOne("k" + zeros(9)), "x - - -");
    EXPECT_EQ(readOne("K" + zeros(9)), "x 5 K - -");
    EXPECT_EQ(readOne("M" + zeros(9)), "x 5 M - -");
    EXPECT_EQ(readOne("G" + zeros(9)), "x 5 G - -");
}

TEST(ShareRows, dateMustBeADayOfTheCalendar)
{
    EXPECT_EQ(readOne("K022920281"), "x 5 K 1 2028-02-29");
    EXPECT_EQ(readOne("K123199991"), "x 5 K 1 9999-12-31");
    EXPECT_EQ(readOne("K010100001"), "x 5 K 1 0000-01-01");
    for (const char* date : {"02292027", "13012026", "00012026", "01002026", "01322026", "00000000",
                             "1121202x", "1x182026", "o backup", "\x1B[2J    "}) {
        EXPECT_EQ(readOne(std::string("K") + date + "1"), "x 5 K 1 -") << date;
    }
}

TEST(ShareRows, stateMustBeADigit)
{
    EXPECT_EQ(readOne("K112120260"), "x 5 K 0 2026-11-21");
    EXPECT_EQ(readOne("K112120269"), "x 5 K 9 2026-11-21");
    for (const char* state : {"b", "/", ":", "\x1B", "\xFF"}) {
        EXPECT_EQ(readOne(std::string("K11212026") + state), "x 5 K - 2026-11-21") << state;
    }
}

// ---- Records alone ----------------------------------------------------------------------------

TEST(ShareRecords, headersCountDoesNotMatter)
{
    const std::string records =
        record(604, "K111820261", "Documents") + record(10, "G" + zeros(9), "Media");
    for (const unsigned count : {0U, 1U, 2U, 3U, 10U, 256U, 65535U}) {
        EXPECT_EQ(describe(readRecords("gubr " + le16(count) + le16(500) + "\n" + records)),
                  (Lines{"Documents 604 K 1 2026-11-18", "Media 10 G - -"}))
            << count;
    }
}

TEST(ShareRecords, headerAloneHasNone)
{
    for (const unsigned count : {0U, 1U, 65535U}) {
        EXPECT_EQ(describe(readRecords(table(count, ""))), Lines()) << count;
    }
}

TEST(ShareRecords, headerCutAnywhereIsRefused)
{
    const std::string header = "gubr " + le16(1) + le16(500) + "\n";
    for (std::size_t size = 0; size < header.size(); ++size) {
        EXPECT_EQ(describe(readRecords(header.substr(0, size))), kRefused) << size;
    }
}

TEST(ShareRecords, recordsThatDoNotEndWithThePayloadAreRefused)
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

TEST(ShareRecords, asManyAsAnAnswerHolds)
{
    std::string records;
    for (int i = 0; i < 314; ++i) {
        records += record(1, "K111820261", "");
    }
    EXPECT_EQ(describe(readRecords(table(0, records))), Lines(314, " 1 K 1 2026-11-18"));
}

TEST(ShareRows, spaceAddsUp)
{
    ShareRow one;
    one.used = view::Space{604, 'K'};
    ShareRow other;
    other.used = view::Space{6, 'M'};
    EXPECT_EQ(view::totalUsed({one, other, ShareRow()}), 6604U);
    EXPECT_EQ(view::totalUsed({}), 0U);
}

// ---- Reports ----------------------------------------------------------------------------------

TEST(BackupReport, isReadIfItHasADay)
{
    using view::BackupReport;
    const auto reportOf = [](const std::string& dateAndState) {
        const std::string record = root::le16(1) + "K" + dateAndState + "x\n";
        return view::readTable(std::string(5, '\0') + root::le16(1) + std::string(3, '\0') + record)
            ->front()
            .report;
    };
    EXPECT_EQ(reportOf("111820261"), BackupReport::kRead);
    EXPECT_EQ(reportOf("11182026?"), BackupReport::kRead);
    EXPECT_EQ(reportOf(std::string(9, '\0')), BackupReport::kNone);
    EXPECT_EQ(reportOf("000000001"), BackupReport::kUnreadable) << "the date was not to be had";
    EXPECT_EQ(reportOf(std::string(8, '\0') + "1"), BackupReport::kUnreadable);
    EXPECT_EQ(reportOf("1" + std::string(8, '\0')), BackupReport::kUnreadable);
}

} // namespace
