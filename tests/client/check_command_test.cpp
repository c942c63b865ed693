// SPDX-License-Identifier: MIT
//
// "vokctl check" as monitoring systems call it.
#include <array>
#include <ctime>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <regex>
#include <sys/stat.h>

#include "sharestatus/status_format.h"
#include "tests/support/root.h"

namespace {

using Strings = std::vector<std::string>;

class CheckCommand : public root::UntracedTest {
  protected:
    void SetUp() override
    {
        root::UntracedTest::SetUp();
        settle("");
    }

    /// Settings that pay no heed to how full this machine's disk is.
    static void settle(const std::string& more)
    {
        root::writeFile("/stubs/settings",
                        "[thresholds]\nfull-warning = 100\nfull-critical = 100\n" + more);
    }

    /// Publishes one share, whose backup is so many days old.
    static void publish(int backupAge = 0)
    {
        const std::time_t day = std::time(nullptr) - std::time_t{86400} * backupAge;
        std::array<char, 9> date{};
        std::strftime(date.data(), date.size(), "%m%d%Y", ::localtime(&day));
        const std::string payload = root::zeros(5) + root::le16(1) + root::zeros(3) +
                                    root::le16(604) + "K" + date.data() + "1Media\n";
        root::writeFile(root::kStatusFile, std::string(sharestatus::encodeStatus(payload).text()));
    }

    static root::Ended check(const Strings& arguments = {})
    {
        Strings command = {root::built("vokctl"), "check", "--config", "/stubs/settings"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        root::Ended ended = root::run(command);
        // What the machine's disk and clock are like is nobody's business.
        for (const char* figure :
             {"used=[0-9]+KB;[0-9]+;[0-9]+;0;[0-9]+", "full=[0-9]+%", "age=[0-9]s",
              "[0-9.]+( [KMG]B)? of [0-9.]+ [KMG]B used, [0-9.]+ "
              "[KMG]B free"}) {
            ended.output = std::regex_replace(ended.output, std::regex(figure), "N");
        }
        return ended;
    }

    static void expectEnd(const root::Ended& ended, int code, const std::string& output)
    {
        EXPECT_EQ(ended.exitCode, code);
        EXPECT_EQ(ended.output, output);
        EXPECT_EQ(ended.errors, "");
    }
};

const std::string kFigures = " | N N;99;99;0;100 N;86400 shares=1 unmeasured=0;0\n";

TEST_F(CheckCommand, allIsWell)
{
    publish();
    expectEnd(check(), 0, "VOKCONTROL OK - N" + kFigures);
    EXPECT_EQ(root::list("/tmp"), Strings{}) << "and traces nothing";
}

TEST_F(CheckCommand, nothingIsKnown)
{
    expectEnd(check(), 3,
              "VOKCONTROL UNKNOWN - No share has been measured yet: start a collection. | N "
              "N;99;99;0;100\n");
}

TEST_F(CheckCommand, backupIsTooOld)
{
    publish(3);
    expectEnd(check(), 0, "VOKCONTROL OK - N" + kFigures);
    expectEnd(check({"--backup-age", "3"}), 0, "VOKCONTROL OK - N" + kFigures);
    const std::string old =
        "VOKCONTROL WARNING - 1 of 1 share has an old backup: Media. What to do: "
        "back up again." +
        kFigures;
    expectEnd(check({"--backup-age", "2"}), 1, old);
    settle("backup-age = 2\n");
    expectEnd(check(), 1, old);
    expectEnd(check({"--backup-age", "3"}), 0, "VOKCONTROL OK - N" + kFigures);
}

TEST_F(CheckCommand, backupHasFailed)
{
    publish();
    settle("[backup]\nfailed-states = 1\n");
    EXPECT_EQ(check().exitCode, 2);
}

TEST_F(CheckCommand, diskIsTooFull)
{
    publish();
    settle("");
    const root::Ended ended = check({"--full", "1"});
    EXPECT_EQ(ended.exitCode, 1) << "not critical, whatever it is";
    EXPECT_NE(ended.output.find("% full, with"), std::string::npos) << ended.output;
    EXPECT_NE(ended.output.find(" N;0;99;0;100 "), std::string::npos) << ended.output;
    root::writeFile("/stubs/settings", "[thresholds]\nfull-warning = 1\nfull-critical = 1\n");
    EXPECT_EQ(check().exitCode, 2);
    expectEnd(check({"--full", "100"}), 0, "VOKCONTROL OK - N" + kFigures);
}

TEST_F(CheckCommand, statusIsTooOld)
{
    publish();
    ::timespec times[2] = {{std::time(nullptr) - 3700, 0}, {std::time(nullptr) - 3700, 0}};
    ::utimensat(AT_FDCWD, root::kStatusFile, times, 0);
    EXPECT_EQ(check().exitCode, 0);
    EXPECT_EQ(check({"--stale", "2"}).exitCode, 0);
    EXPECT_EQ(check({"--stale", "1"}).exitCode, 1);
}

/// The usual codes would be a warning or a critical state to a monitoring system.
TEST_F(CheckCommand, whatCannotBeCheckedIsUnknown)
{
    publish();
    for (const Strings& arguments : std::vector<Strings>{
             {"--full"}, {"--full", "0"}, {"--full", "101"}, {"--stale", "x"}, {"extra"}}) {
        const root::Ended ended = check(arguments);
        EXPECT_EQ(ended.exitCode, 3) << arguments.front();
        EXPECT_NE(ended.errors, "");
    }
    root::writeFile("/stubs/settings", "nonsense\n");
    const root::Ended ended = check();
    EXPECT_EQ(ended.exitCode, 3);
    EXPECT_EQ(ended.output.find("VOKCONTROL UNKNOWN - /stubs/settings:1: "), 0U) << ended.output;
    EXPECT_EQ(ended.errors, "");
}

TEST_F(CheckCommand, helpIsNoCheck)
{
    EXPECT_EQ(check({"--help"}).exitCode, 0);
}

} // namespace
