// SPDX-License-Identifier: MIT
#include "view/processes.h"

#include <algorithm>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/root.h"

namespace {

using view::isProgram;
using view::listProcesses;
using view::Process;
using view::Processes;

/// The process of this id; one without words if there is none.
Process find(const Processes& processes, int id)
{
    const auto found = std::ranges::find(processes.all, id, &Process::id);
    return (found != processes.all.end()) ? *found : Process{};
}

class TheProcesses : public root::UntracedTest {};

TEST_F(TheProcesses, areListedWithTheirParentsAndTheirWords)
{
    const root::Program program({"/usr/bin/sleep", "100"});
    Process process = find(listProcesses(), program.pid());
    for (int tries = 0; tries < 500 && !isProgram(process, "sleep"); ++tries) {
        ::usleep(10000);
        process = find(listProcesses(), program.pid());
    }
    ::kill(program.pid(), SIGKILL);
    EXPECT_EQ(process.parent, ::getpid());
    EXPECT_EQ(process.command, (std::vector<std::string>{"/usr/bin/sleep", "100"}));
}

TEST_F(TheProcesses, ofOthersAreVisibleHere)
{
    EXPECT_TRUE(listProcesses().areVisible);
}

TEST_F(TheProcesses, thatHaveEndedAreNoneOfThem)
{
    const pid_t ended = ::fork();
    if (ended == 0) {
        ::_exit(0);
    }
    siginfo_t information = {};
    ::waitid(P_PID, static_cast<id_t>(ended), &information, WEXITED | WNOWAIT);
    EXPECT_EQ(find(listProcesses(), ended).command, std::vector<std::string>{});
    ::waitpid(ended, nullptr, 0);
}

/// Processes end while they are read.
TEST_F(TheProcesses, areListedWhileOthersComeAndGo)
{
    const pid_t maker = ::fork();
    if (maker == 0) {
        while (::getppid() != 1) {
            const pid_t child = ::fork();
            if (child == 0) {
                ::_exit(0);
            }
            ::waitpid(child, nullptr, 0);
        }
        ::_exit(0);
    }
    for (int i = 0; i < 2000; ++i) {
        EXPECT_EQ(find(listProcesses(), ::getpid()).parent, ::getppid());
    }
    ::kill(maker, SIGKILL);
    ::waitpid(maker, nullptr, 0);
}

TEST(Program, isTheFirstWordWithoutItsFolders)
{
    EXPECT_TRUE(isProgram({.command = {"du"}}, "du"));
    EXPECT_TRUE(isProgram({.command = {"/usr/bin/du", "-sk"}}, "du"));
    EXPECT_FALSE(isProgram({.command = {"/usr/bin/dump"}}, "du"));
    EXPECT_FALSE(isProgram({.command = {"/usr/bin/grep", "du"}}, "du"));
    EXPECT_FALSE(isProgram({.command = {}}, "du"));
}

TEST(Program, isTheSecondWordOfAnEmulators)
{
    EXPECT_TRUE(isProgram({.command = {"/usr/bin/qemu-arm-static", "/usr/bin/du"}}, "du"));
    EXPECT_FALSE(isProgram({.command = {"/usr/bin/qemu-arm-static"}}, "du"));
}

} // namespace
