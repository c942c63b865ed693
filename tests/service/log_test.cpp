// SPDX-License-Identifier: MIT
#include "service/log.h"

#include <gtest/gtest.h>

#include "tests/support/request.h"

namespace {

using request::frame;
using service::describe;
using service::Ending;
using service::Outcome;
using std::chrono::milliseconds;

const Outcome kNothing{Ending::kFinished, ""};

TEST(Log, lineHasNumberCommandCountSizeAndTime)
{
    EXPECT_EQ(
        describe(12, frame("lstu", 0), {Ending::kFinished, std::string(25, 'x')}, milliseconds(31)),
        "12 lstu count=0 answer=25 ms=31");
}

TEST(Log, lineNeverHoldsAParameter)
{
    const std::string line =
        describe(1, frame("crat", 2, "anna\nsecret\n"), kNothing, milliseconds(0));
    EXPECT_EQ(line, "1 crat count=2 answer=0 ms=0");
}

TEST(Log, hostileCodeIsShownByItsBytes)
{
    EXPECT_EQ(describe(1, "\x1B[2J rest", kNothing, milliseconds(0)),
              "1 0x1b5b324a count=1953719666 answer=0 ms=0");
    EXPECT_EQ(describe(1, "a\nb", kNothing, milliseconds(0)), "1 0x610a62 count=0 answer=0 ms=0");
    EXPECT_EQ(describe(1, "\xFF", kNothing, milliseconds(0)), "1 0xff count=0 answer=0 ms=0");
}

TEST(Log, commandAloneIsShownInTheSameWay)
{
    EXPECT_EQ(service::describeCommand(frame("crat", 2, "anna\nsecret\n")), "crat");
    EXPECT_EQ(service::describeCommand("\x1B[2J rest"), "0x1b5b324a");
    EXPECT_EQ(service::describeCommand("ls"), "0x6c73");
}

TEST(Log, shortRequestHasTheCountThatItHas)
{
    EXPECT_EQ(describe(1, "lstu \x02", kNothing, milliseconds(0)), "1 lstu count=2 answer=0 ms=0");
    EXPECT_EQ(describe(1, "lstu", kNothing, milliseconds(0)), "1 lstu count=0 answer=0 ms=0");
}

TEST(Log, badEndIsSaid)
{
    EXPECT_EQ(describe(1, frame("gubs", 0), {Ending::kFailed, ""}, milliseconds(5)),
              "1 gubs count=0 answer=0 ms=5 (its process failed)");
    EXPECT_EQ(describe(1, frame("gubs", 0), {Ending::kTimedOut, ""}, milliseconds(5)),
              "1 gubs count=0 answer=0 ms=5 (took too long and was ended)");
    EXPECT_EQ(describe(1, frame("gubs", 0), {Ending::kNotStarted, ""}, milliseconds(5)),
              "1 gubs count=0 answer=0 ms=5 (could not be started)");
    EXPECT_EQ(
        describe(1, frame("crat", 2, "anna\n$(id)\n"), {Ending::kRefused, "word"}, milliseconds(0)),
        "1 crat count=2 answer=4 ms=0 (refused)");
}

TEST(Log, answersOfTheServicesOwnAreCountedLikeOthers)
{
    EXPECT_EQ(
        describe(3, frame("lstu", 0), service::makeOutcome(Ending::kTimedOut), milliseconds(60001)),
        "3 lstu count=0 answer=10 ms=60001 (took too long and was ended)");
}

TEST(Log, lineAboutAClientBeginsWithWhoItIs)
{
    testing::internal::CaptureStderr();
    service::log(service::Peer{4711, 1000, {100}}, "left");
    service::log(std::nullopt, "left");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "vokserve: uid=1000 pid=4711: left\nvokserve: uid=? pid=?: left\n");
}

TEST(Log, lineIsWrittenInOnePiece)
{
    testing::internal::CaptureStderr();
    service::log("ready");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "vokserve: ready\n");
}

} // namespace
