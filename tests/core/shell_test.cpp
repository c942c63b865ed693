// SPDX-License-Identifier: MIT
#include <cerrno>
#include <csignal>
#include <gtest/gtest.h>

#include "core/core.h"
#include "tests/support/root.h"

namespace {

using Lines = std::vector<std::string>;

class Shell : public root::Test {};

constexpr int exitStatus(int code)
{
    return code << 8;
}

TEST_F(Shell, lineReachesSystemUnchanged)
{
    watch::mayBeStrange("printf");
    const std::string line = "printf '%s' \"two  blanks\" > /tmp/out; exit 3";
    const core::ShellRun run = core::runShellLine(line.c_str());
    EXPECT_EQ(run.result, exitStatus(3));
    EXPECT_EQ(watch::calls(), Lines{line});
    EXPECT_EQ(root::readFile("/tmp/out"), "two  blanks");
}

TEST_F(Shell, olderErrnoIsNeverJudged)
{
    watch::mayBeStrange("exit");
    errno = ECHILD;
    const core::ShellRun run = core::runShellLine("exit 1");
    EXPECT_EQ(run.error, 0);
    EXPECT_FALSE(core::reapedElsewhere(run));
}

TEST_F(Shell, childReapedElsewhereIsRecognised)
{
    watch::mayBeStrange("echo done");
    std::signal(SIGCHLD, SIG_IGN);
    const core::ShellRun run = core::runShellLine("echo done > /tmp/out");
    EXPECT_EQ(run.result, -1);
    EXPECT_EQ(run.error, ECHILD);
    EXPECT_FALSE(core::succeeded(run));
    EXPECT_TRUE(core::reapedElsewhere(run));
    EXPECT_TRUE(core::hasRun(run));
    EXPECT_EQ(root::readFile("/tmp/out"), "done\n");
}

TEST_F(Shell, shellThatCannotStartHasNotRun)
{
    watch::mayBeStrange("true");
    watch::answer("true", -1, EAGAIN);
    const core::ShellRun run = core::runShellLine("true");
    EXPECT_FALSE(core::succeeded(run));
    EXPECT_FALSE(core::reapedElsewhere(run));
    EXPECT_FALSE(core::hasRun(run));
}

TEST_F(Shell, lineThatFailsHasRunButNotSucceeded)
{
    watch::mayBeStrange("");
    for (const char* line : {"exit 1", "exit 127", "kill -9 $$"}) {
        const core::ShellRun run = core::runShellLine(line);
        EXPECT_FALSE(core::succeeded(run)) << line;
        EXPECT_TRUE(core::hasRun(run)) << line;
    }
}

TEST_F(Shell, lineThatSucceedsPassesBothJudgements)
{
    watch::mayBeStrange("true");
    const core::ShellRun run = core::runShellLine("true");
    EXPECT_TRUE(core::succeeded(run));
    EXPECT_TRUE(core::hasRun(run));
}

TEST_F(Shell, removeFileRunsItsLineWithoutATrace)
{
    root::writeFile("/tmp/victim", "");
    EXPECT_EQ(removeFile("/tmp/victim"), 0);
    EXPECT_EQ(watch::calls(), Lines{"sudo rm -f /tmp/victim"});
    EXPECT_EQ(root::list("/tmp"), Lines{});
}

TEST_F(Shell, removeFileOfAPathWithABlankRemovesTwoPaths)
{
    root::writeFile("/tmp/a", "");
    root::writeFile("/tmp/b", "");
    root::writeFile("/tmp/a b", "");
    EXPECT_EQ(removeFile("/tmp/a /tmp/b"), 0);
    EXPECT_EQ(watch::calls(), Lines{"sudo rm -f /tmp/a /tmp/b"});
    EXPECT_EQ(root::list("/tmp"), Lines{"a b"});
}

TEST_F(Shell, removeFileReturnsTheResult)
{
    watch::mayBeStrange("mkdir");
    EXPECT_EQ(removeFile("/tmp/missing"), 0);
    ASSERT_EQ(::system("mkdir /tmp/folder"), 0);
    EXPECT_EQ(removeFile("/tmp/folder"), exitStatus(1));
    watch::answer("sudo", -1, ENOMEM);
    EXPECT_EQ(removeFile("/tmp/x"), -1);
}

TEST_F(Shell, removeFileCutsItsLineAtFiveHundredElevenCharacters)
{
    const std::string start = "sudo rm -f ";
    const std::string longest = "/tmp/" + std::string(511 - start.size() - 5, 'p');
    removeFile(longest.c_str());
    removeFile((longest + "q").c_str());
    EXPECT_EQ(watch::calls(), (Lines{start + longest, start + longest}));
    EXPECT_EQ(watch::calls().front().size(), 511U);
}

} // namespace
