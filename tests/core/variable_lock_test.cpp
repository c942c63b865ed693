// SPDX-License-Identifier: MIT
#include "core/variable_lock.h"

#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "tests/support/root.h"

namespace {

using core::VariableLock;

constexpr const char* kLockFile = "/etc/pelconfig/system_var_lck";

class Lock : public root::Test {
  protected:
    /// Whether another process could get a lock at this moment.
    static bool isFree(int operation)
    {
        const int file = ::open(kLockFile, O_RDONLY);
        const bool isGot = ::flock(file, operation | LOCK_NB) == 0;
        ::close(file);
        return isGot;
    }
};

TEST_F(Lock, writerCreatesTheFileAndExcludesAllOthers)
{
    ::umask(0);
    {
        const VariableLock lock(VariableLock::Mode::kWrite);
        struct stat status = {};
        ASSERT_EQ(::stat(kLockFile, &status), 0);
        EXPECT_EQ(status.st_mode & 0777U, 0666U);
        EXPECT_FALSE(isFree(LOCK_SH));
    }
    EXPECT_TRUE(isFree(LOCK_EX));
    ::umask(022);
}

TEST_F(Lock, readersShare)
{
    root::writeFile(kLockFile, "");
    const VariableLock lock(VariableLock::Mode::kRead);
    EXPECT_TRUE(isFree(LOCK_SH));
    EXPECT_FALSE(isFree(LOCK_EX));
}

TEST_F(Lock, readerCreatesNothing)
{
    const VariableLock lock(VariableLock::Mode::kRead);
    EXPECT_FALSE(root::exists(kLockFile));
}

TEST_F(Lock, signalDoesNotEndTheWait)
{
    root::writeFile(kLockFile, "");
    const int holder = ::open(kLockFile, O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(holder, LOCK_EX), 0);
    static volatile std::sig_atomic_t signals;
    signals = 0;
    struct sigaction action = {};
    action.sa_handler = [](int) { signals = signals + 1; };
    struct sigaction before = {};
    ASSERT_EQ(::sigaction(SIGUSR1, &action, &before), 0);
    const pthread_t waiting = ::pthread_self();
    std::atomic<bool> isReleased = false;
    std::thread releaser([&] {
        ::usleep(100000);
        ::pthread_kill(waiting, SIGUSR1);
        ::usleep(100000);
        isReleased = true;
        ::close(holder);
    });
    {
        const VariableLock lock(VariableLock::Mode::kWrite);
        EXPECT_TRUE(isReleased);
        EXPECT_FALSE(isFree(LOCK_SH));
    }
    releaser.join();
    EXPECT_EQ(signals, 1);
    ::sigaction(SIGUSR1, &before, nullptr);
}

TEST_F(Lock, descriptorZeroIsUsedLikeTheOthers)
{
    root::writeFile(kLockFile, "");
    const int input = ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3);
    ASSERT_GE(input, 0);
    ::close(STDIN_FILENO);
    {
        const VariableLock lock(VariableLock::Mode::kWrite);
        EXPECT_GE(::fcntl(STDIN_FILENO, F_GETFD), 0) << "the lock file has it";
        EXPECT_FALSE(isFree(LOCK_SH));
    }
    EXPECT_LT(::fcntl(STDIN_FILENO, F_GETFD), 0);
    EXPECT_TRUE(isFree(LOCK_EX));
    ::dup2(input, STDIN_FILENO);
    ::close(input);
}

TEST_F(Lock, withoutALockFileNothingWaits)
{
    std::filesystem::permissions("/etc/pelconfig", std::filesystem::perms(0555));
    const VariableLock writer(VariableLock::Mode::kWrite);
    const VariableLock reader(VariableLock::Mode::kRead);
    EXPECT_FALSE(root::exists(kLockFile));
}

} // namespace
