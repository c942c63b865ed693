// SPDX-License-Identifier: MIT
#include "sharestatus/semaphore.h"

#include <ctime>
#include <filesystem>
#include <gtest/gtest.h>

#include "core/bytes.h"
#include "tests/support/root.h"

namespace {

using root::kSemaphoreFile;
using root::le32;

std::uint32_t now()
{
    return static_cast<std::uint32_t>(std::time(nullptr));
}

class Semaphore : public root::Test {
  protected:
    void TearDown() override
    {
        EXPECT_EQ(watch::calls(), std::vector<std::string>{}) << "the semaphore traces nothing";
        root::Test::TearDown();
    }

    /// Compares the file's flag, reserved byte and rest, and expects the present time in it.
    static void expectStampedNow(const std::string& flags, const std::string& rest = "")
    {
        const std::string content = root::readFile(kSemaphoreFile);
        ASSERT_EQ(content.size(), 6 + rest.size());
        EXPECT_EQ(content.substr(0, 2), flags);
        EXPECT_EQ(content.substr(6), rest);
        const std::string stamp = content.substr(2, 4);
        EXPECT_LE(now() - core::getU32(std::span(stamp).first<4>()), 5U);
    }

    static void expectClaimed(const std::string& content, const std::string& flags,
                              const std::string& rest = "")
    {
        root::writeFile(kSemaphoreFile, content);
        EXPECT_TRUE(sharestatus::claimSemaphore());
        expectStampedNow(flags, rest);
    }
};

const std::string kBusy("\x01\0", 2);
const std::string kIdle("\0\0", 2);

TEST_F(Semaphore, missingMarkIsCreatedBusy)
{
    EXPECT_TRUE(sharestatus::claimSemaphore());
    expectStampedNow(kBusy);
}

TEST_F(Semaphore, idleMarkOfAnyTimeIsClaimed)
{
    for (const std::uint32_t time : {0U, now() - 10, now(), now() + 1000, 0xFFFFFFFFU}) {
        expectClaimed(kIdle + le32(time), kBusy);
    }
}

TEST_F(Semaphore, freshBusyMarkIsRespected)
{
    // The clock may reach the next second between mark and claim, so the last age is a second below
    // the limit; the test of the format tests the limit itself.
    for (const std::uint32_t age : {0U, 1U, 7000U, 7198U}) {
        const std::string content = kBusy + le32(now() - age);
        root::writeFile(kSemaphoreFile, content);
        EXPECT_FALSE(sharestatus::claimSemaphore()) << age;
        EXPECT_EQ(root::readFile(kSemaphoreFile), content) << age;
    }
}

TEST_F(Semaphore, oldBusyMarkIsReplaced)
{
    for (const std::uint32_t age : {7200U, 7201U, 1000000U}) {
        expectClaimed(kBusy + le32(now() - age), kBusy);
    }
}

TEST_F(Semaphore, busyMarkFromTheFutureIsRespected)
{
    root::writeFile(kSemaphoreFile, kBusy + le32(now() + 100000));
    EXPECT_FALSE(sharestatus::claimSemaphore());
}

TEST_F(Semaphore, reservedByteIsKeptByAClaimAndClearedByARelease)
{
    expectClaimed(std::string("\0\x5A", 2) + le32(1), "\x01\x5A");
    sharestatus::releaseSemaphore();
    expectStampedNow(kIdle);
}

TEST_F(Semaphore, shortMarkIsCompleted)
{
    expectClaimed("", kBusy);
    expectClaimed(std::string("\0", 1), kBusy);
    expectClaimed("\x01", kBusy); // no time: an old mark
}

TEST_F(Semaphore, bytesAfterTheMarkStay)
{
    expectClaimed(kIdle + le32(1) + "tail", kBusy, "tail");
    sharestatus::releaseSemaphore();
    expectStampedNow(kIdle, "tail");
}

TEST_F(Semaphore, unreadableMarkIsReplaced)
{
    root::writeFile(kSemaphoreFile, kBusy + le32(now()) + "tail");
    std::filesystem::permissions(kSemaphoreFile, std::filesystem::perms(0200));
    EXPECT_TRUE(sharestatus::claimSemaphore());
    std::filesystem::permissions(kSemaphoreFile, std::filesystem::perms(0600));
    expectStampedNow(kBusy);
}

TEST_F(Semaphore, collectionRunsIfTheMarkCannotBeCreated)
{
    std::filesystem::remove_all(root::kStatusFolder);
    EXPECT_TRUE(sharestatus::claimSemaphore());
    sharestatus::releaseSemaphore();
    EXPECT_FALSE(root::exists(root::kStatusFolder));
}

TEST_F(Semaphore, collectionRunsIfTheMarkCannotBeWritten)
{
    const std::string content = kIdle + le32(1);
    root::writeFile(kSemaphoreFile, content);
    std::filesystem::permissions(kSemaphoreFile, std::filesystem::perms(0444));
    EXPECT_TRUE(sharestatus::claimSemaphore());
    sharestatus::releaseSemaphore();
    EXPECT_EQ(root::readFile(kSemaphoreFile), content);
}

TEST_F(Semaphore, folderInItsPlaceIsIgnored)
{
    std::filesystem::create_directory(kSemaphoreFile);
    EXPECT_TRUE(sharestatus::claimSemaphore());
    sharestatus::releaseSemaphore();
    EXPECT_TRUE(std::filesystem::is_directory(kSemaphoreFile));
}

TEST_F(Semaphore, missingMarkIsNotCreatedByARelease)
{
    sharestatus::releaseSemaphore();
    EXPECT_FALSE(root::exists(kSemaphoreFile));
}

TEST_F(Semaphore, fullDiskDoesNotStopACollection)
{
    root::fillDisk("/etc/pelconfig");
    EXPECT_TRUE(sharestatus::claimSemaphore());
    EXPECT_EQ(root::readFile(kSemaphoreFile), "");
    sharestatus::releaseSemaphore();
    EXPECT_EQ(root::readFile(kSemaphoreFile), "");
}

} // namespace
