// SPDX-License-Identifier: MIT
#include "page/deadline.h"

#include <array>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include "page/private_files.h"
#include "page/script.h"
#include "tests/support/root.h"

namespace {

class Deadline : public root::Test {
  protected:
    /// Runs work under a deadline of one second, in a process of its own.
    /// @return what came to its standard output, up to the end of all that held it open
    template <class Work> std::string outputOf(Work work)
    {
        std::array<int, 2> ends{};
        EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
        const page::Descriptor output(ends[0]);
        const pid_t child = ::fork();
        if (child == 0) {
            ::dup2(ends[1], STDOUT_FILENO);
            page::endAfter(std::chrono::seconds(1), "too late\n");
            work();
            ::_exit(7);
        }
        ::close(ends[1]);
        std::string text;
        for (char byte = 0; ::read(output.number(), &byte, 1) > 0;) {
            text += byte;
        }
        EXPECT_EQ(::waitpid(child, &status_, 0), child);
        return text;
    }

    int status_ = 0;
};

TEST_F(Deadline, processThatIsReadyEndsAsItLikes)
{
    EXPECT_EQ(
        outputOf([] { [[maybe_unused]] const ssize_t sent = ::write(STDOUT_FILENO, "x", 1); }),
        "x");
    EXPECT_EQ(WEXITSTATUS(status_), 7);
}

TEST_F(Deadline, lateProcessEndsWithAllThatItHasStarted)
{
    const auto start = std::chrono::steady_clock::now();
    // The output is not at its end before the last of them has ended.
    const std::string text = outputOf([] {
        if (::fork() == 0) {
            ::pause();
        }
        const page::Capture capture;
        ::sleep(60);
    });
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
    EXPECT_TRUE(WIFSIGNALED(status_));
    EXPECT_EQ(WTERMSIG(status_), SIGKILL);
    EXPECT_EQ(text, "too late\n");
}

TEST_F(Deadline, serverThatBlocksAlarmsMakesNoDifference)
{
    sigset_t alarms;
    ::sigemptyset(&alarms);
    ::sigaddset(&alarms, SIGALRM);
    ASSERT_EQ(::sigprocmask(SIG_BLOCK, &alarms, nullptr), 0);
    EXPECT_EQ(outputOf([] { ::sleep(20); }), "too late\n");
    ASSERT_EQ(::sigprocmask(SIG_UNBLOCK, &alarms, nullptr), 0);
}

} // namespace
