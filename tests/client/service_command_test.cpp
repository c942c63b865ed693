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
              "vokctl: the status service was started, unless it was running already\n");
    EXPECT_EQ(root::readFile("/stubs/started"), "pelstatus\n");
}

TEST_F(ServiceCommand, answerThatMakesNoSenseIsSaid)
{
    root::stub("ps", "read -r pid comm state ppid group rest </proc/self/stat; kill -9 $group");
    const root::Ended ended = vokctl({"service", "restart"});
    expectEnd(ended, 7, "",
              "vokctl: the answer cannot be read; it is empty: the command was ignored, is not "
              "known, or failed before it answered\n");
}

TEST_F(ServiceCommand, wrongUsageEndsWithTwo)
{
    EXPECT_EQ(vokctl({"service"}).exitCode, 2);
    EXPECT_EQ(vokctl({"service", "stop"}).exitCode, 2);
}

} // namespace
