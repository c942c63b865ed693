// SPDX-License-Identifier: MIT
//
// The commands that need no handler; those that answer nothing are in dispatcher_test.
#include <cerrno>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/request.h"
#include "tests/support/root.h"

namespace {

using Lines = std::vector<std::string>;
using request::frame;
using request::opening;
using request::Outcome;
using request::process;
using root::trace;

class BuiltinCommands : public root::Test {
  protected:
    const std::string search = "ps | grep pelstatus> " + root::workFile("startPelStatus");
};

TEST_F(BuiltinCommands, collectorIsStartedAndGoodIsAnswered)
{
    root::stub("ps", "echo grep pelstatus");
    root::stub("startapp", "exit 0");
    const Outcome outcome = process(frame("sgss", 0));
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.answer, root::le32(0));
    EXPECT_EQ(outcome.calls,
              opening("sgss", 0,
                      {search, "startapp pelstatus",
                       trace("startPelStatus() start pelstatus return: 0 -- sys ret:Success"),
                       trace("return good 0")}));
}

TEST_F(BuiltinCommands, goodIsAnsweredIfTheCollectorRuns)
{
    root::stub("ps", "echo pelstatus");
    const Outcome outcome = process(frame("sgss", 256));
    EXPECT_EQ(outcome.answer, root::le32(0));
    EXPECT_EQ(outcome.calls, opening("sgss", 256,
                                     {search, trace("startPelStatus() pelstatus already started  "),
                                      trace("return good 0")}));
}

TEST_F(BuiltinCommands, goodIsAnsweredEvenIfTheSearchFails)
{
    root::stub("ps", "exit 0");
    const Outcome outcome = process(frame("sgss", 0));
    EXPECT_EQ(outcome.answer, root::le32(0));
    EXPECT_EQ(outcome.calls.back(), trace("return good 0"));
}

} // namespace
