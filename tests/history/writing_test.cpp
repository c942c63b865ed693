// SPDX-License-Identifier: MIT
#include "history/writing.h"

#include "history/schema.h"
#include "tests/history/entries.h"

namespace {

using entries::entry;
using entries::kDay;
using entries::kMonday;
using entries::Lines;
using entries::share;
using history::Database;
using history::Folder;

const std::string kFile = "/tmp/file.db";

class HistoryWriting : public root::UntracedTest {
  protected:
    void SetUp() override
    {
        root::UntracedTest::SetUp();
        database_.emplace(kFile, Database::Access::kWrite);
        makeSchema(*database_);
    }

    /// Adds an entry so many seconds after the Monday.
    void add(std::time_t time, const std::vector<history::ShareEntry>& shares)
    {
        insertEntry(*database_, entry(kMonday + time, shares), history::Kept::kForEver);
    }

    std::optional<Database> database_;
};

TEST_F(HistoryWriting, keepsEachValueOfAShare)
{
    history::ShareEntry whole = share("Media", 65535, 'G');
    whole.backupState = 9;
    whole.backupDay = std::chrono::sys_days(std::chrono::days(20000));
    history::ShareEntry nothing = share("Media", 0);
    nothing.used = {};
    add(0, {whole, share("Music", 0, 'K')});
    add(1, {nothing, share("Music", 1, 'M')});
    EXPECT_EQ(entries::points("Media", kFile), (Lines{"0 65535 G 9 2024-10-04", "1 - - -"}));
    EXPECT_EQ(entries::points("Music", kFile), (Lines{"0 0 K - -", "1 1 M - -"}));
    EXPECT_EQ(entries::shares(kFile), (Lines{"Media 0 1", "Music 0 1"}));
}

TEST_F(HistoryWriting, keepsTheFileSystemsSize)
{
    add(0, {});
    history::Entry unknown = entry(kMonday + 1, {});
    unknown.capacity = {};
    insertEntry(*database_, unknown, history::Kept::kForEver);
    const std::vector<history::DiskPoint> points = history::Reader(kFile).diskPoints(0);
    ASSERT_EQ(points.size(), 1U) << "what is not known is a gap";
    EXPECT_EQ(points[0].published, kMonday);
    EXPECT_EQ(points[0].capacity.total, 1000U);
    EXPECT_EQ(points[0].capacity.used, 400U);
    EXPECT_EQ(points[0].capacity.free, 600U);
}

TEST_F(HistoryWriting, takesNamesOfAnyBytes)
{
    for (const std::string& name : root::kOddTexts) {
        add(static_cast<std::time_t>(name.size()) * 1000 + static_cast<unsigned char>(name[0]),
            {share(name, 7)});
        EXPECT_EQ(entries::points(name, kFile).size(), 1U) << name;
    }
    EXPECT_EQ(entries::shares(kFile).size(), root::kOddTexts.size());
}

TEST_F(HistoryWriting, takesTheFirstOfTwoEqualNames)
{
    add(0, {share("Media", 1), share("Media", 2)});
    EXPECT_EQ(entries::points("Media", kFile), Lines{"0 1 M - -"});
}

TEST_F(HistoryWriting, goesOnWithARenamedShare)
{
    add(0, {share("Media", 1, Folder{7, 70}), share("Music", 2, Folder{8, 80})});
    add(1, {share("Films", 3, Folder{7, 70}), share("Music", 4, Folder{8, 80})});
    add(2, {share("Videos", 5, Folder{7, 70}), share("Music", 6, Folder{8, 80})});
    EXPECT_EQ(entries::shares(kFile),
              (Lines{"Music 0 2", "Videos 0 2, until 1 Media, until 2 Films"}));
    EXPECT_EQ(entries::points("Videos", kFile), (Lines{"0 1 M - -", "1 3 M - -", "2 5 M - -"}));
    EXPECT_EQ(entries::points("Media", kFile), Lines{});
}

TEST_F(HistoryWriting, tellsANewShareFromARenamedOne)
{
    add(0, {share("Media", 1, Folder{7, 70}), share("Plain", 1)});
    // The number of a removed folder, given to another one; a folder that has kept its name, too; a
    // folder that is not known.
    add(1, {share("Again", 2, Folder{7, 71}), share("Unknown", 2)});
    add(2, {share("Again", 3, Folder{7, 71}), share("Copy", 3, Folder{7, 71})});
    EXPECT_EQ(entries::shares(kFile),
              (Lines{"Again 1 2", "Copy 2 2", "Media 0 0", "Plain 0 0", "Unknown 1 1"}));
}

TEST_F(HistoryWriting, goesByTheNameIfItIsKnown)
{
    add(0, {share("Media", 1, Folder{7, 70}), share("Music", 2, Folder{8, 80})});
    add(1, {share("Media", 3, Folder{8, 80})}); // Music has been put into the place of Media.
    add(2, {share("Sound", 4, Folder{7, 70})}); // No share has that folder now.
    EXPECT_EQ(entries::shares(kFile), (Lines{"Media 0 1", "Music 0 0", "Sound 2 2"}));
    EXPECT_EQ(entries::points("Media", kFile), (Lines{"0 1 M - -", "1 3 M - -"}));
}

} // namespace
