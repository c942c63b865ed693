// SPDX-License-Identifier: MIT
#include "client/notification.h"

#include <cerrno>
#include <filesystem>
#include <thread>

#include "tests/support/root.h"

namespace {

namespace fs = std::filesystem;

using client::isDue;
using client::readTold;
using client::Told;
using client::writeTold;
using enum view::Level;

constexpr std::time_t kDay = 86400;
constexpr std::time_t kNow = 2000000000;
const std::string kFile = "/tmp/kept/notified";

TEST(Notification, isDueWheneverTheLevelChanges)
{
    for (const view::Level before : {kFine, kWarning, kCritical}) {
        for (const view::Level now : {kFine, kWarning, kCritical}) {
            EXPECT_EQ(isDue({before, kNow}, now, kNow + 1), before != now);
        }
    }
}

TEST(Notification, isRepeatedOnceADayWhileItLasts)
{
    EXPECT_FALSE(isDue({kWarning, kNow}, kWarning, kNow + kDay - 1));
    EXPECT_TRUE(isDue({kWarning, kNow}, kWarning, kNow + kDay));
    EXPECT_TRUE(isDue({kCritical, kNow}, kCritical, kNow + 100 * kDay));
    EXPECT_FALSE(isDue({kFine, kNow}, kFine, kNow + 100 * kDay));
}

TEST(Notification, isRepeatedIfTheClockHasBeenSetBack)
{
    EXPECT_FALSE(isDue({kWarning, kNow}, kWarning, kNow));
    EXPECT_TRUE(isDue({kWarning, kNow}, kWarning, kNow - 1));
}

TEST(Notification, knowsLevelsByTheirWords)
{
    EXPECT_EQ(client::levelOf("fine"), kFine);
    EXPECT_EQ(client::levelOf("warning"), kWarning);
    EXPECT_EQ(client::levelOf("critical"), kCritical);
    EXPECT_EQ(client::levelOf("Critical"), std::nullopt);
    EXPECT_EQ(client::levelOf(""), std::nullopt);
}

class NotificationFile : public root::UntracedTest {};

TEST_F(NotificationFile, keepsWhatWasTold)
{
    EXPECT_EQ(readTold(kFile), Told());
    EXPECT_EQ(writeTold({kCritical, kNow}, kFile), 0);
    EXPECT_EQ(readTold(kFile), (Told{kCritical, kNow}));
    EXPECT_EQ(writeTold({kFine, 5}, kFile), 0);
    EXPECT_EQ(readTold(kFile), (Told{kFine, 5}));
    EXPECT_EQ(root::readFile(kFile), "fine 5\n");
    EXPECT_EQ(root::list("/tmp/kept"), std::vector<std::string>{"notified"});
    EXPECT_EQ(fs::status("/tmp/kept").permissions() & fs::perms::mask, fs::perms(0700));
}

TEST_F(NotificationFile, countsAsNothingToldIfItMakesNoSense)
{
    fs::create_directory("/tmp/kept");
    for (const char* content : {"", "worse 5\n", "warning", "warning x", "5 warning"}) {
        root::writeFile(kFile, content);
        EXPECT_EQ(readTold(kFile), Told()) << content;
    }
}

TEST_F(NotificationFile, staysIfTheDiskIsFull)
{
    EXPECT_EQ(writeTold({kWarning, 7}, kFile), 0);
    root::fillDisk();
    EXPECT_EQ(writeTold({kCritical, 8}, kFile), ENOSPC);
    root::freeDisk();
    EXPECT_EQ(readTold(kFile), (Told{kWarning, 7}));
}

TEST_F(NotificationFile, lockIsWaitedFor)
{
    std::optional<client::TellingLock> first("/tmp/lock");
    bool isFree = false;
    std::thread other([&] {
        const client::TellingLock second("/tmp/lock");
        EXPECT_TRUE(isFree);
    });
    ::usleep(100000);
    isFree = true;
    first.reset();
    other.join();
}

} // namespace
