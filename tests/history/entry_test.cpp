// SPDX-License-Identifier: MIT
#include "history/entry.h"

#include <filesystem>

#include "tests/history/entries.h"

namespace {

namespace fs = std::filesystem;

using history::Entry;
using history::identify;
using history::makeEntry;

class HistoryEntry : public root::UntracedTest {};

view::PublishedStatus published()
{
    view::PublishedStatus status;
    status.result = view::PublishedStatus::Result::kComplete;
    status.published = entries::kMonday;
    status.shares = {{.name = "Media",
                      .used = view::Space{604, 'K'},
                      .backupState = 1,
                      .backupDay = std::chrono::sys_days(std::chrono::days(20000)),
                      .report = view::BackupReport::kRead},
                     {.name = "Empty", .used = {}, .backupState = {}, .backupDay = {}}};
    return status;
}

TEST_F(HistoryEntry, hasEachShareAsItWasPublished)
{
    fs::create_directories("/tmp/share/Media");
    const Entry entry = makeEntry(published(), view::Capacity{10, 4, 6}, "/tmp/share");
    EXPECT_EQ(entry.published, entries::kMonday);
    EXPECT_TRUE(entry.hasList);
    EXPECT_EQ(entry.capacity->free, 6U);
    ASSERT_EQ(entry.shares.size(), 2U);
    EXPECT_EQ(entry.shares[0].name, "Media");
    EXPECT_EQ(entries::words(entry.shares[0].used), "604 K");
    EXPECT_EQ(entry.shares[0].backupState, 1);
    EXPECT_EQ(entry.shares[0].backupDay, std::chrono::sys_days(std::chrono::days(20000)));
    EXPECT_EQ(entry.shares[0].folder, identify("/tmp/share/Media"));
    EXPECT_EQ(entry.shares[1].name, "Empty");
    EXPECT_FALSE(entry.shares[1].used);
    EXPECT_FALSE(entry.shares[1].backupState);
    EXPECT_FALSE(entry.shares[1].backupDay);
    EXPECT_FALSE(entry.shares[1].folder) << "it has none";
}

TEST_F(HistoryEntry, saysIfThereWasNoListOfShares)
{
    view::PublishedStatus status = published();
    status.result = view::PublishedStatus::Result::kNoList;
    status.shares.clear();
    const Entry entry = makeEntry(status, std::nullopt, "/tmp/share");
    EXPECT_FALSE(entry.hasList);
    EXPECT_FALSE(entry.capacity);
    EXPECT_TRUE(entry.shares.empty());
}

TEST_F(HistoryEntry, knowsAFolderAgainUnderAnotherName)
{
    fs::create_directories("/tmp/share/Media");
    fs::create_directories("/tmp/share/Other");
    const auto before = identify("/tmp/share/Media");
    if (before) { // Not every file system keeps when a folder was made.
        EXPECT_NE(before, identify("/tmp/share/Other"));
    }
    fs::rename("/tmp/share/Media", "/tmp/share/Films");
    EXPECT_EQ(before, identify("/tmp/share/Films"));
}

TEST_F(HistoryEntry, knowsNoFolderOfFilesLinksAndNothing)
{
    fs::create_directories("/tmp/share/Media");
    root::writeFile("/tmp/share/file", "");
    fs::create_directory_symlink("/tmp/share/Media", "/tmp/share/link");
    for (const char* name : {"file", "link", "none"}) {
        EXPECT_FALSE(identify(std::string("/tmp/share/") + name)) << name;
    }
}

} // namespace
