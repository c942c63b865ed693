// SPDX-License-Identifier: MIT
#include "guard/run.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "guard/guard.h"
#include "tests/support/root.h"

namespace {

/// Shell lines with stubs as programs.
class GuardRun : public root::UntracedTest {
  protected:
    void SetUp() override
    {
        UntracedTest::SetUp();
        guard::usePath("PATH=/stubs:/usr/bin");
    }
    void TearDown() override
    {
        guard::usePath(guard::kDefaultPath);
        UntracedTest::TearDown();
    }
};

TEST_F(GuardRun, theShellGetsACleanEnvironment)
{
    ::setenv("LD_PRELOAD", "/tmp/evil.so", 1);
    ::setenv("IFS", "x", 1);
    ::setenv("ENV", "/tmp/evil", 1);
    root::stub("pelstatus", "env | sort >/tmp/environment");
    EXPECT_EQ(guard::runShell("pelstatus"), 0);
    EXPECT_EQ(root::readFile("/tmp/environment"), "HOME=/\nLC_ALL=C\nPATH=/stubs:/usr/bin\nPWD=" +
                                                      std::filesystem::current_path().string() +
                                                      "\n");
    for (const char* name : {"LD_PRELOAD", "IFS", "ENV"}) {
        ::unsetenv(name);
    }
}

TEST_F(GuardRun, thePathIsTheOneThatTheProgramSets)
{
    std::filesystem::create_directories("/usr/local/bin");
    root::stub("pelstatus", "echo stub >/tmp/ran");
    std::filesystem::copy_file("/stubs/pelstatus", "/usr/local/bin/pelstatus",
                               std::filesystem::copy_options::overwrite_existing);
    root::writeFile("/usr/local/bin/pelstatus", "#!/usr/bin/sh\necho default >/tmp/ran\n");
    guard::usePath(guard::kDefaultPath);
    EXPECT_EQ(guard::runShell("pelstatus"), 0);
    EXPECT_EQ(root::readFile("/tmp/ran"), "default\n");
    std::filesystem::remove("/usr/local/bin/pelstatus");
}

TEST_F(GuardRun, theShellGetsNoDescriptorsExceptTheStandardOnes)
{
    const int leak = ::open("/tmp", O_RDONLY);
    const int high = ::fcntl(leak, F_DUPFD, 200);
    root::stub("pelstatus", "exec ls /proc/self/fd >/tmp/descriptors");
    EXPECT_EQ(guard::runShell("pelstatus"), 0);
    EXPECT_EQ(::fcntl(leak, F_GETFD), 0) << "this process keeps its own";
    ::close(leak);
    ::close(high);
    // ls has the folder open while it lists it.
    EXPECT_EQ(root::readFile("/tmp/descriptors"), "0\n1\n2\n3\n");
}

std::string signalsOf(const std::string& status)
{
    std::string found;
    for (const char* name : {"SigBlk:", "SigIgn:"}) {
        const std::size_t at = status.find(name);
        found += status.substr(at, status.find('\n', at) - at) + "\n";
    }
    return found;
}

TEST_F(GuardRun, theShellIgnoresAndBlocksNoSignal)
{
    sigset_t set;
    ::sigemptyset(&set);
    ::sigaddset(&set, SIGTERM);
    ::sigprocmask(SIG_BLOCK, &set, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGINT, SIG_IGN);
    std::signal(SIGHUP, SIG_IGN);
    root::stub("pelstatus", "cat /proc/self/status >/tmp/status");
    EXPECT_EQ(guard::runShell("pelstatus"), 0);
    for (const int number : {SIGPIPE, SIGINT, SIGHUP}) {
        EXPECT_EQ(std::signal(number, SIG_DFL), SIG_IGN) << "this process keeps its own";
    }
    ::sigprocmask(SIG_UNBLOCK, &set, nullptr);
    EXPECT_EQ(signalsOf(root::readFile("/tmp/status")),
              "SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n");
}

TEST_F(GuardRun, whileItRunsSigintAndSigquitAreIgnoredAndSigchldIsBlocked)
{
    const std::string before = signalsOf(root::readFile("/proc/self/status"));
    // The shell may run before this process, which blocks every signal until the shell has started;
    // SIGTERM, bit 14, is one of them. So the shell waits until that has passed.
    const std::string status = "/proc/" + root::pid() + "/status";
    root::stub("pelstatus", "for attempt in $(seq 100); do\n"
                            "  cat " +
                                status +
                                " >/tmp/status\n"
                                "  grep -q '^SigBlk:.*[4-7c-f]...$' /tmp/status || break\n"
                                "  sleep 0.1\n"
                                "done");
    EXPECT_EQ(guard::runShell("pelstatus"), 0);
    // Signals 2 and 3 are bits 1 and 2; 17 is bit 16.
    EXPECT_EQ(signalsOf(root::readFile("/tmp/status")),
              "SigBlk:\t0000000000010000\nSigIgn:\t0000000000000006\n");
    EXPECT_EQ(signalsOf(root::readFile("/proc/self/status")), before);
}

TEST_F(GuardRun, theStatusOfAShellThatASignalEndsNamesTheSignal)
{
    watch::mayBeStrange("exit");
    root::stub("pelstatus", "kill -9 $PPID; sleep 1");
    root::stub("du", "kill -9 $$");
    EXPECT_EQ(guard::runShell("du -sk \"/share/a\" > /tmp/pelsts1.tmp"), ::system("exit 137"));
}

TEST_F(GuardRun, aShellReapedElsewhereIsAFailure)
{
    std::signal(SIGCHLD, SIG_IGN);
    root::stub("pelstatus", "echo ran >/tmp/ran");
    errno = 0;
    EXPECT_EQ(guard::runShell("pelstatus"), -1);
    EXPECT_EQ(errno, ECHILD);
    EXPECT_EQ(root::readFile("/tmp/ran"), "ran\n");
}

TEST_F(GuardRun, errnoOfALineThatRanIsNotChanged)
{
    root::stub("pelstatus", "exit 0");
    errno = ENOSPC;
    EXPECT_EQ(guard::runShell("pelstatus"), 0);
    EXPECT_EQ(errno, ENOSPC);
}

TEST_F(GuardRun, withoutAShellTheResultIsTheSameAsOfSystem)
{
    std::filesystem::rename("/bin", "/bin.away");
    errno = 0;
    const int result = guard::runShell("pelstatus");
    const int error = errno;
    errno = 0;
    const int expected = ::system("pelstatus");
    const int expectedError = errno;
    std::filesystem::rename("/bin.away", "/bin");
    EXPECT_EQ(result, expected);
    EXPECT_EQ(result, 127 << 8);
    EXPECT_EQ(error, expectedError);
}

} // namespace
