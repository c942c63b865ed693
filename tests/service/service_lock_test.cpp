// SPDX-License-Identifier: MIT
#include "service/service_lock.h"

#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/root.h"

namespace {

using service::ServiceLock;

constexpr const char* kFolder = "/tmp/run";

/// What a process of its own says of taking the lock: nothing if it gets it.
std::string complaintOfAnother()
{
    return root::printed([] {
        const pid_t child = ::fork();
        if (child == 0) {
            try {
                const ServiceLock lock(kFolder);
            } catch (const service::AnotherService& another) {
                const std::string text = another.what();
                [[maybe_unused]] const ssize_t written =
                    ::write(STDOUT_FILENO, text.data(), text.size());
            }
            ::_exit(0);
        }
        ::waitpid(child, nullptr, 0);
    });
}

class OneService : public root::Test {};

TEST_F(OneService, lockIsInAFolderOfTheServicesOwn)
{
    const ServiceLock lock(kFolder);
    EXPECT_EQ(root::list(kFolder), std::vector<std::string>{"lock"});
    EXPECT_EQ(std::filesystem::status(kFolder).permissions(), std::filesystem::perms(0700));
    EXPECT_EQ(std::filesystem::status("/tmp/run/lock").permissions(), std::filesystem::perms(0600));
}

TEST_F(OneService, anotherOneIsToldWhoHasTheLock)
{
    const ServiceLock lock(kFolder);
    EXPECT_EQ(complaintOfAnother(),
              "another service runs already (process " + root::pid() + "); stop it first");
}

TEST_F(OneService, lockIsFreeAfterwards)
{
    std::optional<ServiceLock> lock(kFolder);
    lock.reset();
    EXPECT_EQ(complaintOfAnother(), "");
    EXPECT_EQ(complaintOfAnother(), "") << "nor does the file that stays keep anybody out";
}

TEST_F(OneService, whatTheServiceStartsDoesNotHoldTheLock)
{
    std::optional<ServiceLock> lock(kFolder);
    const pid_t child = ::fork();
    if (child == 0) {
        ::pause();
        ::_exit(0);
    }
    lock.reset();
    EXPECT_EQ(complaintOfAnother(), "");
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
}

TEST_F(OneService, serviceThatHasNoPlaceForItsLockRunsAndSaysSo)
{
    root::writeFile(kFolder, "a file");
    testing::internal::CaptureStderr();
    const ServiceLock lock(kFolder);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "vokserve: cannot lock /tmp/run/lock (Not a directory); make sure that no "
              "second service runs\n");
    EXPECT_EQ(root::readFile(kFolder), "a file");
}

} // namespace
