// SPDX-License-Identifier: MIT
//
// "vokctl metrics" as people and the unit call it.
#include <filesystem>
#include <gtest/gtest.h>
#include <regex>
#include <sys/stat.h>

#include "tests/support/root.h"

namespace {

namespace fs = std::filesystem;
using Strings = std::vector<std::string>;

const std::string kFile = "/tmp/node/vokcontrol.prom";

class MetricsCommand : public root::UntracedTest {
  protected:
    void SetUp() override
    {
        root::UntracedTest::SetUp();
        fs::create_directories("/tmp/node");
    }

    static root::Ended metrics(const Strings& arguments)
    {
        Strings command = {root::built("vokctl"), "metrics"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        root::Ended ended = root::run(command);
        ended.output = withoutDisk(ended.output);
        return ended;
    }

    /// How large and full this machine's disk is, and what is said of that, differs.
    static std::string withoutDisk(const std::string& text)
    {
        static const std::regex figures("((capacity|free)_bytes|\\{level=\"[a-z]+\"\\}) [0-9]+\n");
        return std::regex_replace(text, figures, "$1 N\n");
    }
};

const std::string kText =
    "# TYPE vokcontrol_capacity_bytes gauge\n"
    "# UNIT vokcontrol_capacity_bytes bytes\n"
    "# HELP vokcontrol_capacity_bytes Size of the file system of the shares.\n"
    "vokcontrol_capacity_bytes N\n"
    "# TYPE vokcontrol_free_bytes gauge\n"
    "# UNIT vokcontrol_free_bytes bytes\n"
    "# HELP vokcontrol_free_bytes Space that can still be written there.\n"
    "vokcontrol_free_bytes N\n"
    "# TYPE vokcontrol_collecting gauge\n"
    "# HELP vokcontrol_collecting 1 while a collection runs, otherwise 0.\n"
    "vokcontrol_collecting 0\n"
    "# TYPE vokcontrol_findings gauge\n"
    "# HELP vokcontrol_findings How many findings need attention, by level.\n"
    "vokcontrol_findings{level=\"warning\"} N\n"
    "vokcontrol_findings{level=\"critical\"} N\n"
    "# EOF\n";

TEST_F(MetricsCommand, printsTheText)
{
    const root::Ended ended = metrics({});
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_EQ(ended.output, kText);
    EXPECT_EQ(ended.errors, "");
}

TEST_F(MetricsCommand, replacesAFileAsAWhole)
{
    root::writeFile(kFile, "old");
    root::writeFile(kFile + ".new", "left by one that was killed");
    const fs::path former = "/tmp/former";
    fs::create_hard_link(kFile, former);
    const root::Ended ended = metrics({"--output", kFile});
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_EQ(ended.output + ended.errors, "");
    EXPECT_EQ(withoutDisk(root::readFile(kFile)), kText);
    EXPECT_EQ(root::readFile(former), "old") << "who reads it reads on";
    EXPECT_EQ(fs::status(kFile).permissions() & fs::perms::mask, fs::perms(0644));
    EXPECT_EQ(root::list("/tmp/node"), Strings{"vokcontrol.prom"});
}

TEST_F(MetricsCommand, leavesTheFileIfTheDiskIsFull)
{
    root::writeFile(kFile, "old");
    root::fillDisk();
    const root::Ended ended = metrics({"--output", kFile});
    root::freeDisk();
    EXPECT_EQ(ended.exitCode, 8);
    EXPECT_EQ(ended.errors, "vokctl: cannot write " + kFile + ".new: No space left on device\n");
    EXPECT_EQ(root::readFile(kFile), "old");
    EXPECT_EQ(root::list("/tmp/node"), Strings{"vokcontrol.prom"});
}

TEST_F(MetricsCommand, saysWhyItCannotWrite)
{
    const root::Ended ended = metrics({"--output", "/tmp/none/file.prom"});
    EXPECT_EQ(ended.exitCode, 8);
    EXPECT_EQ(ended.errors,
              "vokctl: cannot write /tmp/none/file.prom.new: No such file or directory\n");
}

} // namespace
