// SPDX-License-Identifier: MIT
//
// "vokctl status" as people and scripts call it.
#include <array>
#include <chrono>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <regex>
#include <sys/stat.h>
#include <thread>

#include "tests/support/collector.h"
#include "tests/support/root.h"

namespace {

using Clock = std::chrono::steady_clock;
using root::le16;
using root::le32;

const std::string kAdvice = "Start a collection with \"vokctl collect\", then try again.\n";

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
    static constexpr std::time_t kPublished = 2079250383; // 2035-11-21 09:33:03, never stale
    static constexpr const char* kTable = "TOTAL\n\n"
                                          "SHARE       USED  STATE  LAST BACKUP\n"
                                          "Documents  604 K  1      2026-11-18\n\n"
                                          "Published 2035-11-21 09:33:03 UTC. ";

    void SetUp() override
    {
        root::UntracedTest::SetUp();
        // Neither the disk's fill level nor the test's date is to be judged.
        root::writeFile("/stubs/settings", "[thresholds]\nfull-warning = 100\nfull-critical = 100\n"
                                           "backup-age = 3650\n");
    }

    static root::Ended status(const std::vector<std::string>& arguments = {})
    {
        std::vector<std::string> command = {root::built("vokctl"), "status", "--config",
                                            "/stubs/settings"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        root::Ended ended = root::run(command);
        ended.output = withoutTotal(ended.output);
        return ended;
    }

    /// How full this machine's disk is is nobody's business here.
    static std::string withoutTotal(const std::string& output)
    {
        static const std::regex total("^[0-9.]+( [KMG]B)? of [0-9.]+ [KMG]B used, [0-9.]+ [KMG]B "
                                      "free\n");
        return std::regex_replace(output, total, "TOTAL\n",
                                  std::regex_constants::format_first_only);
    }

    static void expectComplaint(const root::Ended& ended, int code, const std::string& complaint)
    {
        EXPECT_EQ(ended.exitCode, code);
        EXPECT_EQ(ended.output, "");
        EXPECT_EQ(ended.errors, "vokctl: " + complaint);
    }

    static void expectTable(const root::Ended& ended, const std::string& footer,
                            const std::string& findings = "Nothing needs attention.\n")
    {
        EXPECT_EQ(ended.exitCode, 0);
        EXPECT_EQ(ended.output, kTable + footer + "\n" + findings);
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
    EXPECT_EQ(ended.output, "TOTAL\n\n"
                            "SHARE       USED  STATE  LAST BACKUP\n"
                            "Documents  604 K  1      2026-11-18\n\n"
                            "Published 2040-01-01 00:00:00 UTC. No collection is running.\n\n"
                            "Nothing needs attention.\n");
    EXPECT_EQ(ended.errors, "");
}

TEST_F(StatusCommand, jsonGoesToProgramsAlone)
{
    publish(imageOf(kPayload), kPublished);
    root::Ended ended = status({"--json"});
    EXPECT_EQ(ended.exitCode, 0);
    ended.output =
        std::regex_replace(ended.output, std::regex("(_kib\": )[0-9]+,\n  \""), "$1N,\n  \"");
    EXPECT_EQ(ended.output, R"({
  "published": "2035-11-21T09:33:03Z",
  "collecting": false,
  "collecting_since": null,
  "capacity_kib": N,
  "used_kib": N,
  "free_kib": N,
  "shares": [
    {
      "name": "Documents",
      "used": 604,
      "unit": "K",
      "used_kib": 604,
      "unit_kib": 1,
      "backup_state": 1,
      "backup_date": "2026-11-18"
    }
  ],
  "unmeasured": [],
  "findings": []
}
)");
    EXPECT_EQ(ended.errors, "");
}

/// The seconds on which a mark was set may be two.
std::string withoutTime(root::Ended& ended)
{
    ended.output = std::regex_replace(ended.output, std::regex("since [0-9]{2}:[0-9]{2}:[0-9]{2}"),
                                      "since WHEN");
    return ended.output;
}

TEST_F(StatusCommand, semaphoreTellsWhetherACollectionRuns)
{
    publish(imageOf(kPayload), kPublished);
    root::writeFile(root::kSemaphoreFile, mark('\0', 5));
    expectTable(status(), "No collection is running.\n");
    root::writeFile(root::kSemaphoreFile, "");
    expectTable(status(), "No collection is running.\n");
    const root::IdleCollector collector;
    root::writeFile(root::kSemaphoreFile, mark('\1', 5));
    root::Ended ended = status();
    withoutTime(ended);
    expectTable(ended, "A collection is running since WHEN.\n");
}

TEST_F(StatusCommand, collectionWhoseCollectorIsGoneWasInterrupted)
{
    publish(imageOf(kPayload), kPublished);
    root::writeFile(root::kSemaphoreFile, mark('\1', 7201));
    expectTable(status(), "No collection is running.\n",
                "Warning: The collection that began 2 hours ago was interrupted: start another "
                "one.\n");
}

TEST_F(StatusCommand, settingsAreRead)
{
    publish(imageOf(kPayload), kPublished);
    root::writeFile("/stubs/settings", "[backup]\nfailed-states = 1\n[thresholds]\nfull-warning = "
                                       "100\nfull-critical = 100\n");
    expectTable(
        status(), "No collection is running.\n",
        "Critical: The backup of Documents on 18 November 2026 has failed with state 1: see "
        "why, and back up again.\n");
    root::writeFile("/stubs/settings", "nonsense\n");
    const root::Ended ended = status();
    EXPECT_EQ(ended.exitCode, 2);
    EXPECT_EQ(ended.output, "");
    EXPECT_NE(ended.errors, "");
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
    EXPECT_EQ(ended.output,
              "TOTAL\n\n" + heading + "  USED  STATE  LAST BACKUP\n" + shown +
                  "     -  -      -\n\nPublished 2035-11-21 09:33:03 UTC. No "
                  "collection is running.\n\n"
                  "Warning: 1 of 1 share has never been backed up: " +
                  shown +
                  ". What to do: set up a backup.\n"
                  "Warning: " +
                  shown + " is not measured: its name has a comma or the bracket ]. Rename it.\n");
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
    const root::IdleCollector running;
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
    expectComplaint(status({"--wait", "1"}), 5,
                    "no share status has been published yet. " + kAdvice);
    EXPECT_GE(Clock::now() - start, std::chrono::seconds(1));
    publish(imageOf(kPayload), kPublished);
    root::writeFile(root::kSemaphoreFile, mark('\1', 5));
    expectTable(
        status({"--wait", "1"}), "No collection is running.\n",
        "Warning: The collection that began just now was interrupted. Another one can start "
        "in 120 minutes, or at once if root first removes "
        "/etc/pelconfig/vokcontrol/__shrsem.\n");
    const root::IdleCollector collector;
    expectComplaint(status({"--wait", "1"}), 5,
                    "the collection is still running. Wait longer, or see without --wait what was "
                    "last published.\n");
    publish(zeros(1000), kPublished);
    expectComplaint(status({"--wait", "1"}), 5, "the share status is damaged. " + kAdvice);
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

TEST_F(StatusCommand, statusWithoutAListIsShownAndIsAnError)
{
    publish(imageOf(""), kPublished);
    const root::Ended ended = status();
    EXPECT_EQ(ended.exitCode, 6);
    EXPECT_EQ(ended.output,
              "TOTAL\n\nThe last collection could not get the list of shares.\n\n"
              "Published 2035-11-21 09:33:03 UTC. No collection is running.\n\n"
              "Critical: The last collection could not get the list of shares: see that the "
              "appliance's share script works, then start another one.\n");
    EXPECT_EQ(ended.errors, "vokctl: the last collection could not get the list of shares\n");
    EXPECT_EQ(status({"--json"}).exitCode, 6);
}

// ---- Watching ---------------------------------------------------------------------------------

/// Reads what a terminal shows until it has shown a text.
std::string showUntil(int terminal, const std::string& text)
{
    std::string shown;
    pollfd waiting = {.fd = terminal, .events = POLLIN, .revents = 0};
    while (shown.find(text) == std::string::npos && ::poll(&waiting, 1, 20000) > 0) {
        std::array<char, 4096> bytes{};
        const ssize_t size = ::read(terminal, bytes.data(), bytes.size());
        if (size <= 0) {
            break;
        }
        shown.append(bytes.data(), static_cast<std::size_t>(size));
    }
    return shown;
}

TEST_F(StatusCommand, watchedStatusIsDrawnAnew)
{
    int terminal = -1;
    const pid_t client = ::forkpty(&terminal, nullptr, nullptr, nullptr);
    if (client == 0) {
        ::execl(root::built("vokctl").c_str(), "vokctl", "status", "--watch", "--config",
                "/stubs/settings", nullptr);
        ::_exit(127);
    }
    const std::string none = "no share status has been published yet. Start a collection with "
                             "\"vokctl collect\", then try again.\x1B[K\r\n\x1B[J";
    EXPECT_EQ(showUntil(terminal, "\x1B[J"), "\x1B[2J\x1B[H" + none);
    publish(imageOf(kPayload), kPublished);
    const std::string drawn = showUntil(terminal, "attention.\x1B[K\r\n\x1B[J");
    EXPECT_NE(drawn.find("\x1B[H"), std::string::npos);
    EXPECT_NE(drawn.find("Documents  604 K  1      2026-11-18\x1B[K\r\n"), std::string::npos)
        << drawn;
    ::kill(client, SIGINT);
    int ended = 0;
    ::waitpid(client, &ended, 0);
    EXPECT_TRUE(WIFSIGNALED(ended));
    ::close(terminal);
}

TEST_F(StatusCommand, wrongUsageEndsWithTwo)
{
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"--max-age"},
                                               {"--max-age", "soon"},
                                               {"--max-age", "-1"},
                                               {"--wait", "x"},
                                               {"--watch"},
                                               {"--watch", "--json"},
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
