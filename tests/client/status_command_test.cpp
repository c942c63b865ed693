// SPDX-License-Identifier: MIT
//
// "vokctl status" as people and scripts call it.
#include <array>
#include <chrono>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>

#include "tests/support/root.h"

namespace {

using Clock = std::chrono::steady_clock;
using root::le16;
using root::le32;

const std::string kAdvice = "Start a collection with \"startapp pelstatus\", then try again.\n";

std::string zeros(std::size_t count)
{
    return std::string(count, '\0');
}

const std::string kPayload = zeros(5) + le16(1) + zeros(3) + le16(604) + "K111820261Documents\n";

/// A status file up to its check byte.
std::string imageOf(const std::string& payload)
{
    unsigned sum = 0;
    for (const char c : payload) {
        sum += static_cast<unsigned char>(c);
    }
    return le32(static_cast<std::uint32_t>(payload.size() + 1)) + payload +
           static_cast<char>(sum % 16);
}

void publish(const std::string& image, std::time_t when)
{
    root::writeFile(root::kStatusFile, image);
    const std::array<timespec, 2> times = {timespec{when, 0}, timespec{when, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, root::kStatusFile, times.data(), 0), 0);
}

std::string mark(char flag, long age)
{
    const auto stamp = static_cast<std::uint32_t>(std::time(nullptr) - age);
    return std::string(1, flag) + zeros(1) + le32(stamp);
}

class StatusCommand : public root::UntracedTest {
  protected:
    static constexpr std::time_t kPublished = 1795253583; // 2026-11-21 09:33:03
    static constexpr const char* kTable = "SHARE       USED  STATE  LAST BACKUP\n"
                                          "Documents  604 K  1      2026-11-18\n\n"
                                          "Published 2026-11-21 09:33:03 UTC. ";

    static root::Ended status(const std::vector<std::string>& arguments = {})
    {
        std::vector<std::string> command = {root::built("vokctl"), "status"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return root::run(command);
    }

    static void expectComplaint(const root::Ended& ended, int code, const std::string& complaint)
    {
        EXPECT_EQ(ended.exitCode, code);
        EXPECT_EQ(ended.output, "");
        EXPECT_EQ(ended.errors, "vokctl: " + complaint);
    }

    static void expectTable(const root::Ended& ended, const std::string& footer)
    {
        EXPECT_EQ(ended.exitCode, 0);
        EXPECT_EQ(ended.output, kTable + footer);
        EXPECT_EQ(ended.errors, "");
    }
};

TEST_F(StatusCommand, showsWhatWasPublished)
{
    publish(imageOf(kPayload) + zeros(1000), kPublished);
    expectTable(status(), "No collection is running.\n");
    EXPECT_EQ(root::list("/tmp"), std::vector<std::string>{}) << "and traces nothing";
}

TEST_F(StatusCommand, timesRunOnAfter2038)
{
    constexpr std::time_t kYear2040 = 2208988800;
    publish(imageOf(kPayload), kYear2040);
    const root::Ended ended = status({"--max-age", "60"});
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_EQ(ended.output, "SHARE       USED  STATE  LAST BACKUP\n"
                            "Documents  604 K  1      2026-11-18\n\n"
                            "Published 2040-01-01 00:00:00 UTC. No collection is running.\n");
    EXPECT_EQ(ended.errors, "");
}

TEST_F(StatusCommand, jsonGoesToProgramsAlone)
{
    publish(imageOf(kPayload), kPublished);
    const root::Ended ended = status({"--json"});
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_EQ(ended.output, R"({
  "published": "2026-11-21T09:33:03Z",
  "collecting": false,
  "shares": [
    {
      "name": "Documents",
      "used": 604,
      "unit": "K",
      "backup_state": 1,
      "backup_date": "2026-11-18"
    }
  ]
}
)");
    EXPECT_EQ(ended.errors, "");
}

TEST_F(StatusCommand, semaphoreTellsWhetherACollectionRuns)
{
    publish(imageOf(kPayload), kPublished);
    root::writeFile(root::kSemaphoreFile, mark('\1', 5));
    expectTable(status(), "A collection is running now.\n");
    root::writeFile(root::kSemaphoreFile, mark('\0', 5));
    expectTable(status(), "No collection is running.\n");
    root::writeFile(root::kSemaphoreFile, mark('\1', 7201));
    expectTable(status(), "No collection is running.\n");
    root::writeFile(root::kSemaphoreFile, "");
    expectTable(status(), "No collection is running.\n");
}

TEST_F(StatusCommand, missingStatusIsNoData)
{
    expectComplaint(status(), 6, "no share status has been published yet. " + kAdvice);
    std::filesystem::remove_all(root::kStatusFolder);
    expectComplaint(status({"--json"}), 6, "no share status has been published yet. " + kAdvice);
}

TEST_F(StatusCommand, damagedStatusIsNoData)
{
    const std::string good = imageOf(kPayload);
    std::string wrongCheck = good;
    wrongCheck.back() = static_cast<char>(wrongCheck.back() ^ 1);
    std::string wrongPayload = good;
    wrongPayload[20] = static_cast<char>(wrongPayload[20] + 1);
    for (const std::string& image :
         {wrongCheck, wrongPayload, good.substr(0, good.size() - 1), zeros(1000), std::string(),
          le32(4098) + zeros(5000), imageOf("no table"), imageOf(kPayload + "x")}) {
        publish(image, kPublished);
        expectComplaint(status(), 6, "the share status is damaged. " + kAdvice);
    }
}

TEST_F(StatusCommand, folderInThePlaceOfTheStatusIsNoData)
{
    std::filesystem::create_directory(root::kStatusFile);
    expectComplaint(status(), 6,
                    "cannot read /etc/pelconfig/vokcontrol/__shrStatus: Is a directory\n");
}

TEST_F(StatusCommand, unreadableFilesAreNotPermitted)
{
    publish(imageOf(kPayload), kPublished);
    std::filesystem::permissions(root::kStatusFile, std::filesystem::perms(0));
    expectComplaint(status(), 4,
                    "cannot read /etc/pelconfig/vokcontrol/__shrStatus: Permission denied. Try "
                    "again as root.\n");
    std::filesystem::permissions(root::kStatusFile, std::filesystem::perms(0644));
    root::writeFile(root::kSemaphoreFile, mark('\0', 5));
    std::filesystem::permissions(root::kSemaphoreFile, std::filesystem::perms(0));
    expectComplaint(status({"--wait", "5"}), 4,
                    "cannot read /etc/pelconfig/vokcontrol/__shrsem: Permission denied. Try again "
                    "as root.\n");
}

TEST_F(StatusCommand, ageIsJudgedWhenAskedFor)
{
    publish(imageOf(kPayload), std::time(nullptr) - 100);
    EXPECT_EQ(status().exitCode, 0);
    EXPECT_EQ(status({"--max-age", "110"}).exitCode, 0);
    const root::Ended ended = status({"--max-age", "99"});
    EXPECT_EQ(ended.exitCode, 6);
    EXPECT_EQ(ended.output, "");
    EXPECT_EQ(ended.errors.substr(0, 33),
              "vokctl: the share status is 10" + ended.errors.substr(30, 3));
    EXPECT_NE(ended.errors.find(" seconds old, more than --max-age allows. " + kAdvice),
              std::string::npos);
    publish(imageOf(kPayload), std::time(nullptr) + 100);
    EXPECT_EQ(status({"--max-age", "0"}).exitCode, 0) << "published in the future: fresh";
}

TEST_F(StatusCommand, hostileNameNeverReachesTheTerminalRaw)
{
    const std::string name = "x\x1B]0;title\x07\x9B"
                             "31m\xE2\x80\xAE\x7F";
    publish(imageOf(zeros(5) + le16(1) + zeros(3) + zeros(12) + name + "\n"), kPublished);
    const std::string shown = "x\\u{1b}]0;title\\u{7}\\x9b31m\\u{202e}\\u{7f}";
    const std::string heading = "SHARE" + std::string(shown.size() - 5, ' ');
    const root::Ended ended = status();
    EXPECT_EQ(ended.output, heading + "  USED  STATE  LAST BACKUP\n" + shown +
                                "     -  -      -\n\nPublished 2026-11-21 09:33:03 UTC. No "
                                "collection is running.\n");
    for (const char c : status({"--json"}).output) {
        EXPECT_TRUE(c == '\n' || (c >= ' ' && c <= '~'));
    }
}

TEST_F(StatusCommand, waitsForTheFirstStatus)
{
    std::thread publisher([] {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        publish(imageOf(kPayload), kPublished);
    });
    expectTable(status({"--wait", "20"}), "No collection is running.\n");
    publisher.join();
}

TEST_F(StatusCommand, waitsForARunningCollection)
{
    publish(imageOf(kPayload), kPublished);
    root::writeFile(root::kSemaphoreFile, mark('\1', 5));
    std::thread collector([] {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        root::writeFile(root::kSemaphoreFile, mark('\0', 0));
    });
    expectTable(status({"--wait", "20"}), "No collection is running.\n");
    collector.join();
}

TEST_F(StatusCommand, waitingEnds)
{
    const auto start = Clock::now();
    expectComplaint(status({"--wait", "1"}), 6,
                    "no share status has been published yet. " + kAdvice);
    EXPECT_GE(Clock::now() - start, std::chrono::seconds(1));
    publish(imageOf(kPayload), kPublished);
    root::writeFile(root::kSemaphoreFile, mark('\1', 5));
    expectTable(status({"--wait", "1"}), "A collection is running now.\n");
}

TEST_F(StatusCommand, momentOfARewriteIsWaitedFor)
{
    publish(zeros(1000), kPublished);
    std::thread publisher([] {
        std::this_thread::sleep_for(std::chrono::milliseconds(60));
        publish(imageOf(kPayload), kPublished);
    });
    expectTable(status(), "No collection is running.\n");
    publisher.join();
}

TEST_F(StatusCommand, wrongUsageEndsWithTwo)
{
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"--max-age"},
                                               {"--max-age", "soon"},
                                               {"--max-age", "-1"},
                                               {"--wait", "x"},
                                               {"--unknown"},
                                               {"extra"}}) {
        const root::Ended ended = status(arguments);
        EXPECT_EQ(ended.exitCode, 2) << arguments.front();
        EXPECT_EQ(ended.output, "") << arguments.front();
        EXPECT_NE(ended.errors, "") << arguments.front();
    }
}

TEST_F(StatusCommand, outputThatCannotBeWrittenIsSaid)
{
    publish(imageOf(kPayload), kPublished);
    const root::Ended ended =
        root::run({"/usr/bin/sh", "-c", root::built("vokctl") + " status >/dev/full"});
    expectComplaint(ended, 8, "cannot write to standard output\n");
}

} // namespace
