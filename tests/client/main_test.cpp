// SPDX-License-Identifier: MIT
//
// vokctl itself: help, version, wrong usage.
#include <gtest/gtest.h>

#include "tests/support/root.h"

namespace {

class Client : public root::UntracedTest {
  protected:
    static root::Ended vokctl(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), root::built("vokctl"));
        return root::run(arguments);
    }
};

TEST_F(Client, helpGoesToStandardOutput)
{
    for (const char* option : {"--help", "-h"}) {
        const root::Ended ended = vokctl({option});
        EXPECT_EQ(ended.exitCode, 0);
        EXPECT_NE(ended.output.find("Usage: vokctl [OPTIONS] [SUBCOMMAND]"), std::string::npos);
        EXPECT_NE(ended.output.find("status"), std::string::npos);
        EXPECT_EQ(ended.errors, "");
    }
}

TEST_F(Client, everyCommandHasHelpWithExamples)
{
    const root::Ended ended = vokctl({"status", "--help"});
    EXPECT_EQ(ended.exitCode, 0);
    for (const char* part : {"--json", "--max-age SECONDS", "--wait SECONDS", "Examples:"}) {
        EXPECT_NE(ended.output.find(part), std::string::npos) << part;
    }
}

TEST_F(Client, versionIsPrinted)
{
    const root::Ended ended = vokctl({"--version"});
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_EQ(ended.output, "vokctl " VOKCTL_VERSION "\n");
}

TEST_F(Client, withoutACommandHelpIsWrongUsage)
{
    const root::Ended ended = vokctl({});
    EXPECT_EQ(ended.exitCode, 2);
    EXPECT_EQ(ended.output, "");
    EXPECT_NE(ended.errors.find("Usage: vokctl"), std::string::npos);
}

TEST_F(Client, unknownCommandIsNamed)
{
    const root::Ended ended = vokctl({"stauts"});
    EXPECT_EQ(ended.exitCode, 2);
    EXPECT_EQ(ended.output, "");
    EXPECT_NE(ended.errors.find("stauts"), std::string::npos);
}

} // namespace
