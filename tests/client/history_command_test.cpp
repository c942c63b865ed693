// SPDX-License-Identifier: MIT
//
// "vokctl history" as people, scripts and the units call it.
#include <array>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <regex>
#include <sys/stat.h>

#include "history/reader.h"
#include "sharestatus/status_format.h"
#include "tests/support/root.h"

namespace {

namespace fs = std::filesystem;
using Strings = std::vector<std::string>;

const std::string kFile = history::kFile;

class HistoryCommand : public root::UntracedTest {
  protected:
    void SetUp() override
    {
        root::UntracedTest::SetUp();
        fs::remove_all(fs::path(kFile).parent_path());
    }

    static root::Ended history(const Strings& arguments)
    {
        Strings command = {root::built("vokctl"), "history"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return root::run(command);
    }

    /// Publishes a payload at a time.
    static void publish(const std::string& payload, std::time_t when)
    {
        root::writeFile(root::kStatusFile, std::string(sharestatus::encodeStatus(payload).text()));
        const std::array<timespec, 2> times = {timespec{when, 0}, timespec{when, 0}};
        ASSERT_EQ(::utimensat(AT_FDCWD, root::kStatusFile, times.data(), 0), 0);
    }

    static std::string oneShare(unsigned used)
    {
        return root::zeros(5) + root::le16(1) + root::zeros(3) + root::le16(used) +
               "M111820261Media\n";
    }

    static void expectEnd(const root::Ended& ended, int code, const std::string& output,
                          const std::string& errors)
    {
        EXPECT_EQ(ended.exitCode, code);
        EXPECT_EQ(ended.output, output);
        EXPECT_EQ(ended.errors, errors);
    }
};

const std::string kNoHistory =
    "vokctl: there is no history yet; it begins with the next status that is published\n";

TEST_F(HistoryCommand, remembersEachPublishedStatusOnce)
{
    const std::time_t now = std::time(nullptr);
    expectEnd(history({}), 6, "", kNoHistory);
    expectEnd(history({"--remember"}), 0, "", "");
    EXPECT_FALSE(fs::exists(kFile)) << "nothing has been published";
    publish(oneShare(604), now - 86400);
    expectEnd(history({"--remember"}), 0, "", "");
    expectEnd(history({"--remember"}), 0, "", "");
    publish(oneShare(605), now);
    expectEnd(history({"--remember"}), 0, "", "");
    const std::vector<history::Point> points = history::Reader(kFile).points("Media", 0);
    ASSERT_EQ(points.size(), 2U);
    EXPECT_EQ(points[0].published, now - 86400);
    EXPECT_EQ(points[1].used->value, 605);
    EXPECT_EQ(root::list("/tmp"), Strings{}) << "and traces nothing";
}

TEST_F(HistoryCommand, showsASharesEntriesInEachForm)
{
    publish(oneShare(604), std::time(nullptr));
    expectEnd(history({"--remember"}), 0, "", "");
    const root::Ended table = history({"Media"});
    EXPECT_TRUE(
        std::regex_match(table.output, std::regex("Media, known since .*\n\nUsed: 604 M on .*\n"
                                                  "Change over 30 days: not known\n")))
        << table.output;
    const root::Ended csv = history({"Media", "--csv", "--since", "1w"});
    EXPECT_TRUE(
        std::regex_match(csv.output, std::regex("share,published,used_kib,unit_kib,backup_state,"
                                                "backup_date\n\"Media\",.*Z,604000,1000,1,"
                                                "2026-11-18\n")))
        << csv.output;
    EXPECT_NE(history({"Media", "--json"}).output.find("\"used_kib\": 604000"), std::string::npos);
    EXPECT_NE(history({"--json"}).output.find("\"days_until_full\": null"), std::string::npos);
    EXPECT_EQ(history({"--csv"}).output.substr(0, 41),
              "published,capacity_kib,used_kib,free_kib\n");
    EXPECT_EQ(history({}).output.substr(0, 6), "SHARE ");
    expectEnd(history({"Music"}), 6, "", "vokctl: the history has no share of that name\n");
}

TEST_F(HistoryCommand, takesTimesInDaysWeeksAndYears)
{
    publish(oneShare(604), std::time(nullptr));
    expectEnd(history({"--remember"}), 0, "", "");
    for (const auto& [text, days] : {std::pair{"1d", "1 day"},
                                     {"2w", "14 days"},
                                     {"1y", "365 days"},
                                     {"100y", "36500 days"}}) {
        EXPECT_NE(history({"Media", "--since", text})
                      .output.find(std::string("Change over ") + days + ": not known\n"),
                  std::string::npos)
            << text;
    }
    for (const char* text : {"", "d", "0d", "90", "1m", "-1d", "101y", "5.5d", "1dd"}) {
        const root::Ended ended = history({"--since", text});
        EXPECT_EQ(ended.exitCode, 2) << text;
        EXPECT_EQ(ended.output, "") << text;
        EXPECT_EQ(ended.errors,
                  "vokctl: --since needs a number of days, weeks or years, such as 90d, 12w or 5y."
                  "\nSee \"vokctl history --help\".\n");
    }
}

TEST_F(HistoryCommand, saysThatADamagedFileWasPutAside)
{
    publish(oneShare(604), std::time(nullptr));
    expectEnd(history({"--remember"}), 0, "", "");
    root::writeFile(kFile, "no database");
    expectEnd(history({}), 6, "",
              "vokctl: the history is damaged; the next status that is published begins a new "
              "one\n");
    expectEnd(history({"--remember"}), 0, "",
              "vokctl: the history was damaged. The file is now " + kFile +
                  ".damaged, and a new history has begun.\n");
    EXPECT_EQ(root::readFile(kFile + ".damaged"), "no database");
}

TEST_F(HistoryCommand, saysThatTheDiskIsFull)
{
    fs::create_directories("/etc/pelconfig/kept");
    fs::create_directories(fs::path(kFile).parent_path().parent_path());
    fs::create_directory_symlink("/etc/pelconfig/kept", fs::path(kFile).parent_path());
    publish(oneShare(604), std::time(nullptr));
    expectEnd(history({"--remember"}), 0, "", "");
    publish(oneShare(605), std::time(nullptr) + 1);
    root::fillDisk("/etc/pelconfig");
    const root::Ended ended = history({"--remember"});
    root::freeDisk("/etc/pelconfig");
    EXPECT_EQ(ended.exitCode, 8);
    EXPECT_EQ(ended.errors.substr(0, 137),
              "vokctl: the history has stopped, because its disk is full; everything else goes "
              "on. Free some space: the next status is remembered again:");
    fs::remove_all("/etc/pelconfig/kept");
}

TEST_F(HistoryCommand, remembersNothingOfADamagedStatus)
{
    root::writeFile(root::kStatusFile, "no status");
    expectEnd(history({"--remember"}), 6, "",
              "vokctl: the share status is damaged, so it has not been remembered\n");
    EXPECT_FALSE(fs::exists(kFile));
}

} // namespace
