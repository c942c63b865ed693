// SPDX-License-Identifier: MIT
//
// "vokctl collect" as people and scripts call it.
#include <chrono>
#include <gtest/gtest.h>
#include <thread>

#include "sharestatus/status_format.h"
#include "tests/support/collector.h"
#include "tests/support/scripted_service.h"
#include "tests/support/vokserve.h"

namespace {

using root::Exchange;
using root::exchange;
using root::le32;
using Strings = std::vector<std::string>;

const std::string kStarted = "vokctl: a collection was started, unless one was running already\n";
const std::string kPublished = "vokctl: a new share status was published\n";
const std::string kFrame = "sgss " + le32(0) + "\n";

/// A mark of a collection, set just now.
std::string mark(char busy)
{
    const auto stamp = static_cast<std::uint32_t>(std::time(nullptr));
    return std::string(1, busy) + root::zeros(1) + le32(stamp);
}

void publish(const std::string& payload = root::zeros(10))
{
    root::writeFile(root::kStatusFile, std::string(sharestatus::encodeStatus(payload).text()));
}

void pause(int milliseconds)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

class CollectCommand : public root::UntracedTest {
  protected:
    static void expectEnd(const root::Ended& ended, int code, const std::string& errors)
    {
        EXPECT_EQ(ended.exitCode, code);
        EXPECT_EQ(ended.output, "");
        EXPECT_EQ(ended.errors, errors);
    }
};

TEST_F(CollectCommand, startsOneUnderBothOfItsNames)
{
    for (Strings command : {Strings{"collect"}, Strings{"service", "restart"}}) {
        const Exchange started = exchange(Strings(command), {le32(0)});
        EXPECT_EQ(started.frames, Strings{kFrame});
        expectEnd(started.ended, 0, kStarted);
    }
}

TEST_F(CollectCommand, waitsForWhatIsPublishedAfterTheCall)
{
    publish();
    for (Strings command :
         {Strings{"collect", "--wait", "20"}, Strings{"service", "restart", "--wait", "20"}}) {
        std::thread collector([] {
            pause(300);
            publish();
        });
        const Exchange waited = exchange(Strings(command), {le32(0)});
        EXPECT_EQ(waited.frames, Strings{kFrame});
        expectEnd(waited.ended, 0, kPublished);
        collector.join();
    }
}

/// What runs at the time of the call may have begun before it, and a start would do nothing.
TEST_F(CollectCommand, oneThatRunsAlreadyIsNotTheOne)
{
    root::IdleCollector running;
    root::writeFile(root::kSemaphoreFile, mark('\1'));
    bool isFirstOver = false;
    std::thread collector([&] {
        pause(300);
        publish();
        root::writeFile(root::kSemaphoreFile, mark('\0'));
        isFirstOver = true;
        pause(600);
        publish();
    });
    const auto start = std::chrono::steady_clock::now();
    const Exchange waited = exchange({"collect", "--wait", "20"}, {le32(0)});
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(900));
    collector.join();
    EXPECT_TRUE(isFirstOver);
    expectEnd(waited.ended, 0, kPublished);
}

TEST_F(CollectCommand, startThatDoesNothingIsRepeated)
{
    std::thread collector([] {
        pause(1500);
        publish();
    });
    const Exchange waited = exchange({"collect", "--wait", "20"}, {le32(0), le32(0)});
    EXPECT_EQ(waited.frames, (Strings{kFrame, kFrame}));
    expectEnd(waited.ended, 0, kPublished);
    collector.join();
}

TEST_F(CollectCommand, timeRunsOut)
{
    const std::string late = "vokctl: the collection has not ended in time; to wait longer: "
                             "\"vokctl status --wait SECONDS\"\n";
    const std::string neverBegan =
        "vokctl: no collection has begun; another process with \"pelstatus\" in its command line "
        "is taken for one, see \"ps\"\n";
    expectEnd(exchange({"collect", "--wait", "1"}, {le32(0)}).ended, 5, neverBegan);
    const root::IdleCollector running;
    root::writeFile(root::kSemaphoreFile, mark('\1'));
    expectEnd(exchange({"collect", "--wait", "1"}, {}).ended, 5, late);
}

TEST_F(CollectCommand, collectionWithoutAListIsAnError)
{
    std::thread collector([] {
        pause(300);
        publish("");
    });
    expectEnd(exchange({"collect", "--wait", "20"}, {le32(0)}).ended, 6,
              "vokctl: the collection could not get the list of shares\n");
    collector.join();
}

TEST_F(CollectCommand, markOfAnInterruptedCollectionIsSaidAtOnce)
{
    root::writeFile(root::kSemaphoreFile, mark('\1'));
    expectEnd(
        exchange({"collect", "--wait", "20"}, {}).ended, 6,
        "vokctl: a collection was interrupted, and its mark keeps others from starting for two "
        "hours; root can remove /etc/pelconfig/vokcontrol/__shrsem\n");
}

TEST_F(CollectCommand, serviceThatIsNotThereIsSaid)
{
    for (const Strings& wait : {Strings{}, Strings{"--wait", "20"}}) {
        Strings command = {root::built("vokctl"), "collect", "--socket", "/tmp/none"};
        command.insert(command.end(), wait.begin(), wait.end());
        expectEnd(root::run(command), 3,
                  "vokctl: cannot reach the service at /tmp/none: No such file or directory. Is "
                  "vokserve running?\n");
    }
}

} // namespace
