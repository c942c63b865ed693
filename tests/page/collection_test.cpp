// SPDX-License-Identifier: MIT
#include "page/collection.h"

#include <chrono>
#include <cstdint>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <thread>

#include "sharestatus/status_format.h"
#include "tests/support/root.h"

namespace {

using page::BackupLevel;
using page::Collection;
using page::Share;
using root::le16;
using root::le32;
using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::year_month_day;
using Result = page::Collection::Result;

constexpr sys_days kToday =
    year_month_day(std::chrono::year(2026), std::chrono::November, std::chrono::day(21));
constexpr std::time_t kPublished = 1795253583;

std::string zeros(std::size_t count)
{
    return std::string(count, '\0');
}

std::string table(unsigned count, const std::string& records)
{
    return zeros(5) + le16(count) + zeros(3) + records;
}

const std::string kRecord = le16(604) + "K111820261Documents\n";

std::string fileOf(const std::string& payload)
{
    return std::string(sharestatus::encodeStatus(payload).text()) + zeros(100);
}

void publish(const std::string& content, std::time_t time = kPublished)
{
    root::writeFile(root::kStatusFile, content);
    const timespec when[2] = {{time, 0}, {time, 0}};
    ::utimensat(AT_FDCWD, root::kStatusFile, when, 0);
}

void mark(char busy, long age)
{
    const auto stamp = static_cast<std::uint32_t>(std::time(nullptr) - age);
    root::writeFile(root::kSemaphoreFile, std::string(1, busy) + zeros(1) + le32(stamp));
}

class Collections : public root::Test {};

TEST_F(Collections, sharesAreReadFieldByField)
{
    const auto shares = page::readShares(table(1, kRecord));
    ASSERT_TRUE(shares);
    ASSERT_EQ(shares->size(), 1U);
    const Share& share = shares->front();
    EXPECT_EQ(share.name, "Documents");
    EXPECT_EQ(share.used->value, 604);
    EXPECT_EQ(share.used->unit, 'K');
    EXPECT_EQ(share.backupState, 1);
    EXPECT_EQ(share.backupDay, kToday - days(3));
}

TEST_F(Collections, whatMakesNoSenseIsAbsent)
{
    const std::string nothing = zeros(12) + "Empty\n";
    const std::string nonsense = le16(5) + "T13322026xOdd\n";
    const auto shares = page::readShares(table(2, nothing + nonsense));
    ASSERT_TRUE(shares);
    for (const Share& share : *shares) {
        EXPECT_FALSE(share.used) << share.name;
        EXPECT_FALSE(share.backupState) << share.name;
        EXPECT_FALSE(share.backupDay) << share.name;
    }
    const auto noDate = page::readShares(table(1, le16(5) + "M1x1820261Odd\n"));
    EXPECT_FALSE(noDate->front().backupDay) << "a date with a letter in it";
}

TEST_F(Collections, payloadThatIsNoTableGivesNone)
{
    EXPECT_FALSE(page::readShares("no table"));
    EXPECT_FALSE(page::readShares(table(2, kRecord)));
    EXPECT_FALSE(page::readShares(table(1, kRecord + "x")));
    EXPECT_EQ(page::readShares(table(0, ""))->size(), 0U);
}

TEST_F(Collections, publishedStatusIsComplete)
{
    publish(fileOf(table(1, kRecord)));
    const Collection collection = page::readCollection();
    EXPECT_EQ(collection.result, Result::kComplete);
    EXPECT_EQ(collection.shares.size(), 1U);
    EXPECT_EQ(collection.published, kPublished);
    EXPECT_FALSE(collection.isRunning);
}

TEST_F(Collections, timesRunOnAfter2038)
{
    constexpr std::time_t kYear2040 = 2208988800;
    publish(fileOf(table(1, kRecord)), kYear2040);
    EXPECT_EQ(page::readCollection().published, kYear2040);
}

TEST_F(Collections, statusFileOfThreeGibibytesIsReadAsFarAsItCounts)
{
    publish(fileOf(table(1, kRecord)));
    std::filesystem::resize_file(root::kStatusFile, 3221225472U);
    const Collection collection = page::readCollection();
    EXPECT_EQ(collection.result, Result::kComplete);
    EXPECT_EQ(collection.shares.size(), 1U);
}

TEST_F(Collections, missingStatusIsNone)
{
    const Collection collection = page::readCollection();
    EXPECT_EQ(collection.result, Result::kNone);
    EXPECT_EQ(collection.published, 0);
    EXPECT_TRUE(collection.shares.empty());
}

TEST_F(Collections, emptyPayloadIsACollectionWithoutAList)
{
    publish(fileOf(""));
    const Collection collection = page::readCollection();
    EXPECT_EQ(collection.result, Result::kNoList);
    EXPECT_EQ(collection.published, kPublished);
}

TEST_F(Collections, damagedStatusIsSaidToBe)
{
    std::string wrongCheck = fileOf(table(1, kRecord));
    wrongCheck[20] = static_cast<char>(wrongCheck[20] + 1);
    for (const std::string& content : {wrongCheck, std::string(), zeros(100), fileOf("no table")}) {
        publish(content);
        const Collection collection = page::readCollection();
        EXPECT_EQ(collection.result, Result::kDamaged);
        EXPECT_EQ(collection.published, 0);
    }
}

TEST_F(Collections, momentOfARewriteIsWaitedFor)
{
    publish(zeros(100));
    std::thread publisher([] {
        std::this_thread::sleep_for(std::chrono::milliseconds(60));
        publish(fileOf(table(1, kRecord)));
    });
    EXPECT_EQ(page::readCollection().result, Result::kComplete);
    publisher.join();
}

TEST_F(Collections, semaphoreTellsWhetherOneRuns)
{
    mark('\1', 5);
    EXPECT_TRUE(page::readCollection().isRunning);
    mark('\0', 5);
    EXPECT_FALSE(page::readCollection().isRunning);
    mark('\1', 7201);
    EXPECT_FALSE(page::readCollection().isRunning);
}

TEST_F(Collections, nothingIsTracedOrRun)
{
    publish(fileOf(table(1, kRecord)));
    (void)page::readCollection();
    EXPECT_EQ(watch::calls(), std::vector<std::string>{});
}

Share backedUp(int age)
{
    Share share;
    share.backupDay = kToday - days(age);
    return share;
}

TEST_F(Collections, backupsAreJudgedByTheirAge)
{
    EXPECT_EQ(page::judgeBackup(Share(), kToday), BackupLevel::kNone);
    EXPECT_EQ(page::judgeBackup(backedUp(-1), kToday), BackupLevel::kRecent);
    EXPECT_EQ(page::judgeBackup(backedUp(7), kToday), BackupLevel::kRecent);
    EXPECT_EQ(page::judgeBackup(backedUp(8), kToday), BackupLevel::kAgeing);
    EXPECT_EQ(page::judgeBackup(backedUp(30), kToday), BackupLevel::kAgeing);
    EXPECT_EQ(page::judgeBackup(backedUp(31), kToday), BackupLevel::kOld);
}

TEST_F(Collections, spaceAddsUp)
{
    Share one;
    one.used = page::Space{604, 'K'};
    Share other;
    other.used = page::Space{6, 'M'};
    EXPECT_EQ(page::totalUsed({one, other, Share()}), 6604U);
    EXPECT_EQ(page::totalUsed({}), 0U);
}

} // namespace
