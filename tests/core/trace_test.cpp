// SPDX-License-Identifier: MIT
#include <cerrno>
#include <gtest/gtest.h>

#include "core/core.h"
#include "tests/support/root.h"

namespace {

using Lines = std::vector<std::string>;

class Trace : public root::UntracedTest {};

TEST_F(Trace, firstOneTruncatesTheFileAndLaterOnesAppend)
{
    root::writeFile(root::kTraceFile, "another process's story\n");
    root::inChild([] {
        dbg_trace("one");
        dbg_trace("two %d", 2);
        dbg_trace("three");
    });
    EXPECT_EQ(watch::calls(),
              (Lines{root::firstTrace("one"), root::trace("two 2"), root::trace("three")}));
    EXPECT_EQ(root::readFile(root::kTraceFile), "one\ntwo 2\nthree\n");
}

TEST_F(Trace, everyNewProcessEmptiesTheFile)
{
    root::inChild([] { dbg_trace("first process"); });
    root::inChild([] { dbg_trace("second process"); });
    EXPECT_EQ(root::readFile(root::kTraceFile), "second process\n");
}

TEST_F(Trace, flagIsClearedEvenIfTheFirstTraceIsLost)
{
    root::inChild([] {
        dbg_trace("unbalanced \" quote");
        dbg_trace("next");
    });
    EXPECT_EQ(watch::calls(),
              (Lines{root::firstTrace("unbalanced \" quote"), root::trace("next")}));
    EXPECT_EQ(root::readFile(root::kTraceFile), "next\n");
}

class LaterTrace : public root::Test {};

TEST_F(LaterTrace, shellInterpretsQuotes)
{
    dbg_trace("before");
    dbg_trace("a \"quoted  word\" here");
    dbg_trace("half a \" quote");
    dbg_trace("after");
    EXPECT_EQ(watch::calls(), (Lines{root::trace("before"), root::trace("a \"quoted  word\" here"),
                                     root::trace("half a \" quote"), root::trace("after")}));
    EXPECT_EQ(root::readFile(root::kTraceFile), "before\na quoted word here\nafter\n");
}

TEST_F(LaterTrace, dollarAndBackquoteAreExpanded)
{
    dbg_trace("%s", "home $HOME sum `expr 2 + 3`");
    EXPECT_EQ(root::readFile(root::kTraceFile), "home /root sum 5\n");
}

TEST_F(LaterTrace, shellInterpretsBackslashes)
{
    dbg_trace("%s", "a\\$HOME b");
    EXPECT_EQ(watch::calls(), Lines{root::trace("a\\$HOME b")});
    EXPECT_EQ(root::readFile(root::kTraceFile), "a$HOME b\n");
}

TEST_F(LaterTrace, messageOf1999CharactersIsWhole)
{
    const std::string message(1999, 'm');
    dbg_trace("%s", message.c_str());
    EXPECT_EQ(watch::calls(), Lines{root::trace(message)});
    EXPECT_EQ(root::readFile(root::kTraceFile), message + "\n");
}

TEST_F(LaterTrace, longerMessageIsCutAt1999Characters)
{
    for (const std::size_t size : {2000U, 2001U, 2048U, 5000U, 100000U}) {
        watch::restart();
        dbg_trace("%s", std::string(size, 'm').c_str());
        EXPECT_EQ(watch::calls(), Lines{root::trace(std::string(1999, 'm'))}) << size;
    }
}

TEST_F(LaterTrace, emptyMessageIsAnEmptyLine)
{
    dbg_trace("%s", "");
    EXPECT_EQ(watch::calls(), Lines{root::trace("")});
    EXPECT_EQ(root::readFile(root::kTraceFile), "\n");
}

TEST_F(LaterTrace, returnsTheResultOfItsLine)
{
    EXPECT_EQ(dbg_trace("good"), 0);
    watch::answer("echo", 0x1200, 0);
    EXPECT_EQ(dbg_trace("bad"), 0x1200);
    watch::answer("echo", -1, EAGAIN);
    EXPECT_EQ(dbg_trace("not run"), -1);
}

TEST_F(LaterTrace, doesNotChangeErrno)
{
    errno = ENOSPC;
    dbg_trace("good");
    EXPECT_EQ(errno, ENOSPC);
    watch::answer("echo", -1, EAGAIN);
    dbg_trace("not run");
    EXPECT_EQ(errno, ENOSPC);
}

TEST_F(LaterTrace, succeedsEvenIfTheFileCannotBeWritten)
{
    watch::mayBeStrange("mkdir");
    ASSERT_EQ(::system("mkdir /tmp/dbg_vokcontrol.txt"), 0);
    EXPECT_NE(dbg_trace("lost"), 0);
    EXPECT_EQ(root::list("/tmp"), Lines{"dbg_vokcontrol.txt"});
}

TEST_F(LaterTrace, succeedsEvenIfTheDiskIsFull)
{
    dbg_trace("kept");
    root::fillDisk("/tmp");
    dbg_trace("%s", std::string(1999, 'x').c_str());
    dbg_trace("%s", std::string(1999, 'y').c_str());
    dbg_trace("%s", std::string(1999, 'z').c_str());
    EXPECT_EQ(watch::calls().size(), 4U);
    EXPECT_EQ(root::readFile(root::kTraceFile).substr(0, 5), "kept\n");
}

} // namespace
