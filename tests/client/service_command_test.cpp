// SPDX-License-Identifier: MIT
//
// "vokctl service" as people and scripts call it.
#include <gtest/gtest.h>

#include "tests/support/vokserve.h"

namespace {

class ServiceCommand : public root::ServedTest {};

TEST_F(ServiceCommand, restartStartsTheStatusService)
{
    root::stub("ps", "echo grep pelstatus");
    root::stub("startapp", "echo \"$@\" >/stubs/started");
    expectEnd(vokctl({"service", "restart"}), 0, "",
              "vokctl: a collection was started, unless one was running already\n");
    EXPECT_EQ(root::readFile("/stubs/started"), "pelstatus\n");
}

TEST_F(ServiceCommand, requestThatCrashesIsSaid)
{
    root::stub("ps", "read -r pid comm state ppid group rest </proc/self/stat; kill -9 $group");
    expectEnd(vokctl({"service", "restart"}), 7, "",
              "vokctl: The request's process failed before it answered; see the service's log. "
              "(0x53000002)\n");
}

/// The same without a service: whatever is sent all the same ends with 3.
class ServiceCommandWithoutService : public ServiceCommand {
  protected:
    void SetUp() override { root::UntracedTest::SetUp(); }
    void TearDown() override { root::UntracedTest::TearDown(); }

    static constexpr const char* kAway = "vokctl: cannot reach the service at /tmp/socket: No such "
                                         "file or directory. Is vokserve running?\n";
};

TEST_F(ServiceCommandWithoutService, serviceThatIsAwayIsSaid)
{
    expectEnd(vokctl({"service", "restart"}), 3, "", kAway);
}

TEST_F(ServiceCommandWithoutService, wrongUsageEndsWithTwo)
{
    EXPECT_EQ(vokctl({"service"}).exitCode, 2);
    EXPECT_EQ(vokctl({"service", "stop"}).exitCode, 2);
    EXPECT_EQ(vokctl({"service", "restart", "extra"}).exitCode, 2);
}

} // namespace
