// SPDX-License-Identifier: MIT
//
// The collector, from its start to its end.
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>

#include "core/bytes.h"
#include "tests/support/root.h"

namespace {

using Lines = std::vector<std::string>;
using Clock = std::chrono::steady_clock;
using root::firstTrace;
using root::le16;
using root::le32;
using root::trace;
using root::zeros;

constexpr std::size_t kMebibyte = 1048576;

std::string fileOf(const std::string& payload)
{
    unsigned sum = 0;
    for (const char c : payload) {
        sum += static_cast<unsigned char>(c);
    }
    const std::string image = le32(static_cast<std::uint32_t>(payload.size() + 1)) + payload +
                              static_cast<char>(sum % 16);
    return image + zeros(kMebibyte - image.size());
}

const std::string kNoShares = fileOf(zeros(10));
const std::string kNoList = fileOf("");

std::uint32_t now()
{
    return static_cast<std::uint32_t>(std::time(nullptr));
}

class Daemon : public root::UntracedTest {
  protected:
    const std::string program = root::built("vokcontrol");

    void runDaemon(const Lines& arguments = {})
    {
        Lines command = {program};
        command.insert(command.end(), arguments.begin(), arguments.end());
        const root::Ended ended = root::run(command, true);
        EXPECT_EQ(ended.exitCode, 0);
        EXPECT_EQ(ended.output, "");
    }

    /// The collector works in a process that it starts itself; its work files have that process's
    /// id.
    [[nodiscard]] static std::string listingOf(const Lines& calls)
    {
        for (const std::string& call : calls) {
            const std::size_t at = call.find("/tmp/share_info");
            if (call.starts_with("sudo") && at != std::string::npos) {
                return call.substr(at);
            }
        }
        return "";
    }

    /// The calls of a collection that finds no shares, from the first trace on.
    [[nodiscard]] static Lines emptyCollection(const std::string& listing)
    {
        const std::string command =
            "sudo /usr/bin/php /etc/inc/api_share.php tovGetShareList " + listing;
        return {firstTrace("share_info sys(" + command + ")"), command,
                trace("share_info() return from share_info 0"),
                trace("pelParseShareInfo() share info buf: return [];\n"),
                trace("ParseShare return user: 0 - iLen: 10")};
    }

    static void expectCalls(const Lines& before, const Lines& collection)
    {
        Lines calls = before;
        calls.insert(calls.end(), collection.begin(), collection.end());
        EXPECT_EQ(watch::calls(), calls);
    }

    static void expectIdle()
    {
        const std::string mark = root::readFile(root::kSemaphoreFile);
        ASSERT_EQ(mark.size(), 6U);
        EXPECT_EQ(mark.substr(0, 2), zeros(2));
        EXPECT_LE(now() - core::getU32(std::span(mark).subspan<2, 4>()), 5U);
    }

    void SetUp() override
    {
        root::UntracedTest::SetUp();
        root::stubListing("");
    }
};

TEST_F(Daemon, publishesEveryShareAndLeavesNothingElse)
{
    root::stubListing(root::shareBlock("Music") + root::shareBlock("Away", "external") +
                      root::shareBlock("My Photos"));
    root::stubUsage("Music", "77");
    root::stubUsage("My Photos", "3000");
    root::writeFile("/etc/pelconfig/vokcontrol/__bksts/__bkMusic", "411212026");
    runDaemon();
    EXPECT_EQ(root::readFile(root::kStatusFile),
              fileOf(zeros(5) + le16(2) + zeros(3) + le16(77) + "K112120264Music\n" + le16(3) +
                     "M" + zeros(9) + "My Photos\n"));
    expectIdle();
    EXPECT_EQ(root::list(root::kStatusFolder), (Lines{"__bksts", "__shrStatus", "__shrsem"}));
    EXPECT_EQ(root::list("/tmp"), Lines{"dbg_vokcontrol.txt"});
}

TEST_F(Daemon, withoutSharesTheHeaderIsPublished)
{
    runDaemon();
    EXPECT_EQ(root::readFile(root::kStatusFile), kNoShares);
    EXPECT_EQ(root::readFile(root::kStatusFile).substr(0, 15), le32(11) + zeros(11));
    expectIdle();
    expectCalls({"nice(-16)", "daemon(0, 1)"}, emptyCollection(listingOf(watch::calls())));
}

TEST_F(Daemon, failedCollectionPublishesAnEmptyPayload)
{
    root::stub("php", "exit 1");
    runDaemon();
    EXPECT_EQ(root::readFile(root::kStatusFile), kNoList);
    expectIdle();
}

TEST_F(Daemon, startAtBootWithAStatusFileEndsAtOnce)
{
    root::writeFile(root::kStatusFile, "anything");
    const auto start = Clock::now();
    runDaemon({"boot"});
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(5));
    EXPECT_EQ(watch::calls(), Lines{"nice(-16)"});
    EXPECT_EQ(root::readFile(root::kStatusFile), "anything");
    EXPECT_FALSE(root::exists(root::kSemaphoreFile));
}

TEST_F(Daemon, startAtBootWithoutAStatusFileWaitsTenSeconds)
{
    // An unreadable file counts as none. It is made readable during the wait, to see that it is
    // rewritten.
    root::writeFile(root::kStatusFile, "unreadable");
    std::filesystem::permissions(root::kStatusFile, std::filesystem::perms(0));
    const auto start = Clock::now();
    std::thread opener([] {
        std::this_thread::sleep_for(std::chrono::seconds(2));
        std::filesystem::permissions(root::kStatusFile, std::filesystem::perms(0644));
    });
    runDaemon({""});
    opener.join();
    EXPECT_GE(Clock::now() - start, std::chrono::seconds(10));
    EXPECT_EQ(root::readFile(root::kStatusFile), kNoShares);
    expectCalls({"nice(-16)", "sleep(10)", "daemon(0, 1)"},
                emptyCollection(listingOf(watch::calls())));
}

TEST_F(Daemon, moreThanOneArgumentIsNoStartAtBoot)
{
    root::writeFile(root::kStatusFile, "old");
    runDaemon({"one", "two"});
    EXPECT_EQ(root::readFile(root::kStatusFile), kNoShares);
    expectCalls({"nice(-16)", "daemon(0, 1)"}, emptyCollection(listingOf(watch::calls())));
}

TEST_F(Daemon, leavesItsStarterAtOnceAndKeepsItsStreams)
{
    root::stub("php", "sleep 1; echo from the script; : >\"$3\"");
    const auto start = Clock::now();
    root::Program daemon({"/usr/bin/sh", "-c", program + "; echo back"});
    const root::Ended ended = daemon.wait();
    EXPECT_GE(Clock::now() - start, std::chrono::seconds(1));
    EXPECT_EQ(ended.output, "back\nfrom the script\n");
}

TEST_F(Daemon, endsWithZero)
{
    // A process that loses its parent becomes this process's child.
    if (::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0) != 0) {
        ASSERT_EQ(errno, EINVAL) << "qemu-user does not know this call";
        std::puts("left out: an emulated process adopts nobody");
        return;
    }
    runDaemon();
    int status = -1;
    EXPECT_GT(::waitpid(-1, &status, 0), 0);
    EXPECT_EQ(status, 0);
    ::prctl(PR_SET_CHILD_SUBREAPER, 0, 0, 0, 0);
}

TEST_F(Daemon, worksInTheRootFolder)
{
    root::stub("php", "pwd >/tmp/folder; : >\"$3\"");
    ASSERT_EQ(root::run({"/usr/bin/sh", "-c", "cd /share && " + program}).exitCode, 0);
    EXPECT_EQ(root::readFile("/tmp/folder"), "/\n");
}

TEST_F(Daemon, endsAtOnceIfTheBusyMarkIsFresh)
{
    const std::string mark = std::string("\x01\0", 2) + le32(now() - 7190);
    root::writeFile(root::kSemaphoreFile, mark);
    runDaemon();
    EXPECT_EQ(watch::calls(), (Lines{"nice(-16)", "daemon(0, 1)"}));
    EXPECT_EQ(root::readFile(root::kSemaphoreFile), mark);
    EXPECT_FALSE(root::exists(root::kStatusFile));
}

TEST_F(Daemon, oldBusyMarkIsReplaced)
{
    root::writeFile(root::kSemaphoreFile, std::string("\x01\0", 2) + le32(now() - 7200));
    runDaemon();
    EXPECT_EQ(root::readFile(root::kStatusFile), kNoShares);
    expectIdle();
}

TEST_F(Daemon, markIsBusyWhileTheCollectionRuns)
{
    root::stub("php", "cp " + std::string(root::kSemaphoreFile) + " /tmp/seen; : >\"$3\"");
    runDaemon();
    const std::string seen = root::readFile("/tmp/seen");
    ASSERT_EQ(seen.size(), 6U);
    EXPECT_EQ(seen.substr(0, 2), std::string("\x01\0", 2));
    expectIdle();
}

TEST_F(Daemon, endsAtOnceDuringAnotherCollection)
{
    // The first collection runs until the second start has ended.
    root::stub("php",
               "echo run >>/tmp/runs; while [ ! -e /stubs/go ]; do sleep 0.01; done; : >\"$3\"");
    root::Program first({program});
    while (!root::exists("/tmp/runs")) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    runDaemon();
    root::writeFile("/stubs/go", "");
    EXPECT_EQ(first.wait().exitCode, 0);
    EXPECT_EQ(root::readFile("/tmp/runs"), "run\n");
    EXPECT_EQ(root::readFile(root::kStatusFile), kNoShares);
    expectIdle();
}

TEST_F(Daemon, twoStartedTogetherLeaveAWholeStatusAndAnIdleMark)
{
    for (int round = 0; round < 20; ++round) {
        root::Program first({program});
        root::Program second({program});
        EXPECT_EQ(first.wait().exitCode, 0);
        EXPECT_EQ(second.wait().exitCode, 0);
        // Both may collect with the same work file, so one may miss its list. In any case the
        // published status is whole.
        const std::string status = root::readFile(root::kStatusFile);
        EXPECT_TRUE(status == kNoShares || status == kNoList);
        expectIdle();
    }
}

TEST_F(Daemon, markOfAKilledCollectionIsReplacedAfterTwoHours)
{
    root::stub("php", "killall -9 vokcontrol");
    runDaemon();
    const std::string mark = root::readFile(root::kSemaphoreFile);
    EXPECT_EQ(mark.substr(0, 2), std::string("\x01\0", 2));
    EXPECT_FALSE(root::exists(root::kStatusFile));

    root::stubListing("");
    runDaemon();
    EXPECT_FALSE(root::exists(root::kStatusFile)) << "the mark is still fresh";
    root::writeFile(root::kSemaphoreFile, mark.substr(0, 2) + le32(now() - 7200));
    runDaemon();
    EXPECT_EQ(root::readFile(root::kStatusFile), kNoShares);
    expectIdle();
}

TEST_F(Daemon, missingFolderIsIgnored)
{
    std::filesystem::remove_all(root::kStatusFolder);
    runDaemon();
    expectCalls({"nice(-16)", "daemon(0, 1)"}, emptyCollection(listingOf(watch::calls())));
    EXPECT_FALSE(root::exists(root::kStatusFolder));
}

TEST_F(Daemon, readOnlyFolderIsIgnored)
{
    std::filesystem::permissions(root::kStatusFolder, std::filesystem::perms(0555));
    runDaemon();
    expectCalls({"nice(-16)", "daemon(0, 1)"}, emptyCollection(listingOf(watch::calls())));
    EXPECT_EQ(root::list(root::kStatusFolder), Lines{"__bksts"});
}

TEST_F(Daemon, fullDiskDoesNotPreventANewStatus)
{
    runDaemon();
    root::stubListing(root::shareBlock("Music"));
    root::fillDisk("/etc/pelconfig");
    runDaemon();
    EXPECT_EQ(root::readFile(root::kStatusFile),
              fileOf(zeros(5) + le16(1) + zeros(3) + zeros(12) + "Music\n"));
    expectIdle();
}

TEST_F(Daemon, missingShellToolsEndInAnEmptyStatus)
{
    std::filesystem::remove("/usr/bin/php");
    runDaemon();
    EXPECT_EQ(root::readFile(root::kStatusFile), kNoList);
    expectIdle();
}

TEST_F(Daemon, worksWithClosedStreams)
{
    ASSERT_EQ(root::run({"/usr/bin/sh", "-c", program + " <&- >&- 2>&-; sleep 1"}).exitCode, 0);
    EXPECT_EQ(root::readFile(root::kStatusFile), kNoShares);
    expectIdle();
}

} // namespace
