// SPDX-License-Identifier: MIT
#include "guard/guard.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/root.h"

namespace {

using Lines = std::vector<std::string>;

constexpr const char* kPath = "PATH=/stubs:/usr/bin";

/// Its lines find stubs; refusals go to a file.
class Guard : public root::UntracedTest {
  protected:
    void SetUp() override
    {
        UntracedTest::SetUp();
        guard::usePath(kPath);
        log_ = ::open("/stubs/log", O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        guard::logTo(log_);
    }
    void TearDown() override
    {
        guard::logTo(STDERR_FILENO);
        ::close(log_);
        guard::usePath(guard::kDefaultPath);
        UntracedTest::TearDown();
    }

  private:
    int log_ = -1;
};

std::string logged()
{
    return root::readFile("/stubs/log");
}

TEST_F(Guard, aKnownLineRunsAsItStands)
{
    root::stub("du", "printf '%s|' \"$@\"; exit 3");
    EXPECT_EQ(guard::carryOut("du -sk \"/share/Tom & Jerry films\" > /tmp/pelsts1.tmp"), 3 << 8);
    EXPECT_EQ(root::readFile("/tmp/pelsts1.tmp"), "-sk|/share/Tom & Jerry films|");
    EXPECT_EQ(logged(), "");
}

TEST_F(Guard, wordsReachTheScriptAsManyArguments)
{
    root::stub("php", "printf '%s|' \"$@\"");
    EXPECT_EQ(guard::carryOut("sudo /usr/bin/php /etc/inc/api_system.php tovSetHostname my  nas > "
                              "/tmp/setSysVar1"),
              0);
    EXPECT_EQ(root::readFile("/tmp/setSysVar1"), "/etc/inc/api_system.php|tovSetHostname|my|nas|");
}

TEST_F(Guard, aLineWithoutAShapeDoesNotRunAndIsLoggedWithoutItsText)
{
    root::stub("du", ": >/tmp/ran");
    errno = ENOSPC;
    EXPECT_EQ(guard::carryOut("du -sk \"/share/`secret`\" > /tmp/pelsts1.tmp"), 2 << 8);
    EXPECT_EQ(errno, ENOSPC);
    EXPECT_EQ(guard::carryOut("secret"), 2 << 8);
    EXPECT_EQ(guard::carryOut(""), 2 << 8);
    EXPECT_EQ(guard::carryOut("sudo rm -r /"), 2 << 8);
    EXPECT_EQ(root::list("/tmp"), Lines{});
    const std::string start =
        std::string(::program_invocation_short_name) + ": a shell line was refused: ";
    EXPECT_EQ(logged(), start + "measuring a share, share\n" + start +
                            "an unknown one, its words\n" + start + "an unknown one, its words\n" +
                            start + "removing a file, its words\n");
}

TEST_F(Guard, theResultOfARefusalIsThatOfALineThatAShellCannotParse)
{
    watch::mayBeStrange("du");
    EXPECT_EQ(guard::carryOut("du -sk \"/share/a\"b\" > /tmp/pelsts1.tmp"),
              ::system("du -sk \"/share/a\"b\" > /tmp/pelsts1.tmp 2>/dev/null"));
}

TEST_F(Guard, withoutALineItSaysThatThereIsAShell)
{
    EXPECT_EQ(guard::carryOut(nullptr), 1);
}

TEST_F(Guard, theShellGetsACleanEnvironment)
{
    ::setenv("LD_PRELOAD", "/tmp/evil.so", 1);
    ::setenv("IFS", "x", 1);
    ::setenv("ENV", "/tmp/evil", 1);
    root::stub("pelstatus", "env | sort >/tmp/environment");
    EXPECT_EQ(guard::carryOut("pelstatus"), 0);
    EXPECT_EQ(root::readFile("/tmp/environment"), "HOME=/\nLC_ALL=C\nPATH=/stubs:/usr/bin\nPWD=" +
                                                      std::filesystem::current_path().string() +
                                                      "\n");
    for (const char* name : {"LD_PRELOAD", "IFS", "ENV"}) {
        ::unsetenv(name);
    }
}

TEST_F(Guard, thePathIsTheProgramsOwn)
{
    std::filesystem::create_directories("/usr/local/bin");
    root::stub("pelstatus", "echo stub >/tmp/ran");
    std::filesystem::copy_file("/stubs/pelstatus", "/usr/local/bin/pelstatus",
                               std::filesystem::copy_options::overwrite_existing);
    root::writeFile("/usr/local/bin/pelstatus", "#!/usr/bin/sh\necho default >/tmp/ran\n");
    guard::usePath(guard::kDefaultPath);
    EXPECT_EQ(guard::carryOut("pelstatus"), 0);
    EXPECT_EQ(root::readFile("/tmp/ran"), "default\n");
    std::filesystem::remove("/usr/local/bin/pelstatus");
}

TEST_F(Guard, theShellGetsNoDescriptorsButTheStandardOnes)
{
    const int leak = ::open("/tmp", O_RDONLY);
    const int high = ::fcntl(leak, F_DUPFD, 200);
    root::stub("pelstatus", "exec ls /proc/self/fd >/tmp/descriptors");
    EXPECT_EQ(guard::carryOut("pelstatus"), 0);
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

TEST_F(Guard, theShellIgnoresAndBlocksNoSignal)
{
    sigset_t set;
    ::sigemptyset(&set);
    ::sigaddset(&set, SIGTERM);
    ::sigprocmask(SIG_BLOCK, &set, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGINT, SIG_IGN);
    std::signal(SIGHUP, SIG_IGN);
    root::stub("pelstatus", "cat /proc/self/status >/tmp/status");
    EXPECT_EQ(guard::carryOut("pelstatus"), 0);
    for (const int number : {SIGPIPE, SIGINT, SIGHUP}) {
        EXPECT_EQ(std::signal(number, SIG_DFL), SIG_IGN) << "this process keeps its own";
    }
    ::sigprocmask(SIG_UNBLOCK, &set, nullptr);
    EXPECT_EQ(signalsOf(root::readFile("/tmp/status")),
              "SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n");
}

TEST_F(Guard, meanwhileInterruptAndQuitAreIgnoredAndEndOfChildrenWaits)
{
    const std::string before = signalsOf(root::readFile("/proc/self/status"));
    root::stub("pelstatus", "cat /proc/$PPID/status >/tmp/shell; "
                            "cat /proc/" +
                                root::pid() + "/status >/tmp/status");
    EXPECT_EQ(guard::carryOut("pelstatus"), 0);
    // Signals 2 and 3 are bits 1 and 2; 17 is bit 16.
    EXPECT_EQ(signalsOf(root::readFile("/tmp/status")),
              "SigBlk:\t0000000000010000\nSigIgn:\t0000000000000006\n");
    EXPECT_EQ(signalsOf(root::readFile("/proc/self/status")), before);
}

TEST_F(Guard, aShellThatASignalEndsSaysSo)
{
    watch::mayBeStrange("exit");
    root::stub("pelstatus", "kill -9 $PPID; sleep 1");
    root::stub("du", "kill -9 $$");
    EXPECT_EQ(guard::carryOut("du -sk \"/share/a\" > /tmp/pelsts1.tmp"), ::system("exit 137"));
}

TEST_F(Guard, aShellThatSomebodyElseReapsIsToldApart)
{
    std::signal(SIGCHLD, SIG_IGN);
    root::stub("pelstatus", "echo ran >/tmp/ran");
    errno = 0;
    EXPECT_EQ(guard::carryOut("pelstatus"), -1);
    EXPECT_EQ(errno, ECHILD);
    EXPECT_EQ(root::readFile("/tmp/ran"), "ran\n");
}

TEST_F(Guard, errnoOfALineThatRanIsLeftAsItWas)
{
    root::stub("pelstatus", "exit 0");
    errno = ENOSPC;
    EXPECT_EQ(guard::carryOut("pelstatus"), 0);
    EXPECT_EQ(errno, ENOSPC);
}

TEST_F(Guard, withoutAShellTheResultIsThatOfSystem)
{
    std::filesystem::rename("/bin", "/bin.away");
    errno = 0;
    const int result = guard::carryOut("pelstatus");
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
