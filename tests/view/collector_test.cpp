// SPDX-License-Identifier: MIT
#include "view/collector.h"

#include <gtest/gtest.h>

namespace {

using view::Collector;
using view::findCollector;
using view::Process;
using State = view::Collector::State;

const Process kInit = {1, 0, {"/sbin/init"}};
const Process kCollector = {40, 1, {"/usr/bin/vokcollect"}};

TEST(TheCollector, runsUnderEachOfItsNames)
{
    for (const char* name : {"vokcontrol", "/usr/sbin/vokcollect", "/usr/bin/pelstatus"}) {
        const Collector collector = findCollector({{kInit, {40, 1, {name}}}, true});
        EXPECT_EQ(collector.state, State::kRuns) << name;
        EXPECT_EQ(collector.share, "");
    }
}

TEST(TheCollector, isGoneIfNoProcessIsIt)
{
    EXPECT_EQ(findCollector({{kInit, {7, 1, {"/usr/bin/vokserve"}}}, true}).state, State::kGone);
    EXPECT_EQ(findCollector({{kInit, {7, 1, {"grep", "pelstatus"}}}, true}).state, State::kGone);
    EXPECT_EQ(findCollector({{kInit, {7, 1, {"sh", "-c", "pelstatus"}}}, true}).state,
              State::kGone);
}

TEST(TheCollector, isNotKnownIfOthersCannotBeSeen)
{
    EXPECT_EQ(findCollector({{{7, 1, {"/usr/bin/vokserve"}}}, false}).state, State::kUnknown);
    EXPECT_EQ(findCollector({{}, false}).state, State::kUnknown);
    EXPECT_EQ(findCollector({{kCollector}, false}).state, State::kRuns);
}

TEST(TheCollector, measuresWhatItsProgramDoes)
{
    const Process du = {42, 40, {"du", "-sk", "/share/Family Videos"}};
    EXPECT_EQ(findCollector({{kInit, kCollector, du}, true}).share, "Family Videos");
    const Process shell = {41, 40, {"sh", "-c", "du -sk \"/share/Media\" > /tmp/pelsts1.tmp"}};
    const Process below = {42, 41, {"/usr/bin/du", "-sk", "/share/Media"}};
    EXPECT_EQ(findCollector({{below, kInit, kCollector, shell}, true}).share, "Media");
    EXPECT_EQ(findCollector({{kInit, kCollector, shell}, true}).share, "");
}

TEST(TheCollector, hasNothingToDoWithWhatOthersMeasure)
{
    const Process other = {50, 1, {"du", "-sk", "/share/Media"}};
    EXPECT_EQ(findCollector({{kInit, kCollector, other}, true}).share, "");
    const Process elsewhere = {50, 40, {"du", "-sk", "/home"}};
    EXPECT_EQ(findCollector({{kInit, kCollector, elsewhere}, true}).share, "");
    const Process orphan = {50, 49, {"du", "-sk", "/share/Media"}};
    EXPECT_EQ(findCollector({{kInit, kCollector, orphan}, true}).share, "");
}

} // namespace
