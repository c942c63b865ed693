// SPDX-License-Identifier: MIT
#include "cmdsvc/channel.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>

#include "cmdsvc/protocol.h"
#include "tests/support/file_events.h"
#include "tests/support/request.h"
#include "tests/support/root.h"

namespace {

using Lines = std::vector<std::string>;
using root::le32;
using root::trace;

/// A request is in hand.
class Channel : public root::Test {
  protected:
    void SetUp() override
    {
        root::Test::SetUp();
        std::ranges::fill(fin_buf, '\0');
        ASSERT_TRUE(cmdsvc::openChannel(7));
    }

    void TearDown() override
    {
        cmdsvc::closeCurrentFile();
        cmdsvc::closeAnswer();
        root::Test::TearDown();
    }

    static std::string answer()
    {
        cmdsvc::closeAnswer();
        return root::readFile("/tmp/outbuf7");
    }
};

TEST_F(Channel, codesAreLittleEndianWords)
{
    EXPECT_EQ(cmdsvc::codeWord("vers"), 0x73726576U);
    EXPECT_EQ(cmdsvc::codeWord("\x01\x02\x03\xFF"), 0xFF030201U);
}

TEST_F(Channel, wordHeaderAndErrorFrames)
{
    cmdsvc::writeWord(0xFF000003);
    EXPECT_EQ(answer(), "\x03" + std::string(2, '\0') + "\xFF");
    ASSERT_TRUE(cmdsvc::openChannel(7));
    cmdsvc::writeHeader("lsut", 0x01020304);
    EXPECT_EQ(answer(), "lsut \x04\x03\x02\x01\n");
    ASSERT_TRUE(cmdsvc::openChannel(7));
    cmdsvc::endWithError(0x20000006);
    EXPECT_EQ(answer(), "erro " + le32(0x20000006));
}

TEST_F(Channel, statusFrameTakesTheRequestLine)
{
    cmdsvc::requestLine.fill('x');
    EXPECT_EQ(SendReturnStatus(0xC2000002, "sub1"), 0);
    EXPECT_EQ(std::string(cmdsvc::requestLine.data(), 4096),
              "sub1 " + le32(0xC2000002) + std::string(4096 - 9, '\0'));
    EXPECT_EQ(watch::calls(),
              Lines{trace("SendReturnStatus errCode 0xC2000002 -- fwrite return: 10")});
    EXPECT_EQ(answer(), "sub1 " + le32(0xC2000002) + std::string(1, '\0'));
}

TEST_F(Channel, statusFrameGivesBackTheResultOfItsTrace)
{
    watch::answer("echo", 0x500, 0);
    EXPECT_EQ(SendReturnStatus(0, "subs"), 0x500);
    EXPECT_EQ(answer(), "subs " + le32(0) + std::string(1, '\0'));
}

TEST_F(Channel, statusFrameTracesHowMuchHasBeenWritten)
{
    request::loseAnswer();
    EXPECT_EQ(SendReturnStatus(0xF0000001, "gspc"), 0);
    EXPECT_EQ(watch::calls(),
              Lines{trace("SendReturnStatus errCode 0xF0000001 -- fwrite return: 0")});
}

TEST_F(Channel, longNameIsCutInAStatusFrame)
{
    SendReturnStatus(1, "toolongname");
    EXPECT_EQ(answer(), "toolo" + le32(1) + std::string(1, '\0'));
}

TEST_F(Channel, shortNameKeepsTheCodesPlace)
{
    SendReturnStatus(1, "ab");
    EXPECT_EQ(answer(), std::string("ab \0\0", 5) + le32(1) + std::string(1, '\0'));
}

TEST_F(Channel, answerThatACallerHasSetIsNotOursToClose)
{
    FILE* theirs = std::fopen("/tmp/theirs", "w");
    fout_buf = theirs;
    SendReturnStatus(1, "subs");
    ASSERT_TRUE(cmdsvc::openChannel(8));
    EXPECT_EQ(std::fclose(theirs), 0);
    EXPECT_EQ(root::readFile("/tmp/theirs"), "subs " + le32(1) + std::string(1, '\0'));
}

TEST_F(Channel, slotClosesItselfClear)
{
    root::writeFile("/tmp/file", "x");
    ASSERT_NE(cmdsvc::openCurrentFile("/tmp/file"), nullptr);
    EXPECT_NE(cmdsvc::currentFile(), nullptr);
    EXPECT_TRUE(cmdsvc::closeCurrentFile());
    EXPECT_EQ(cmdsvc::currentFile(), nullptr);
    EXPECT_TRUE(cmdsvc::closeCurrentFile()) << "a second close does nothing";
}

TEST_F(Channel, slotHoldsOneFile)
{
    root::writeFile("/tmp/file", "x");
    const std::size_t before = root::list("/proc/self/fd").size();
    for (int i = 0; i < 20; ++i) {
        ASSERT_NE(cmdsvc::openCurrentFile("/tmp/file"), nullptr);
    }
    EXPECT_EQ(root::list("/proc/self/fd").size(), before + 1);
    EXPECT_EQ(cmdsvc::openCurrentFile("/tmp/missing"), nullptr);
    EXPECT_EQ(cmdsvc::currentFile(), nullptr);
    EXPECT_EQ(root::list("/proc/self/fd").size(), before);
}

TEST_F(Channel, olderFileOfTheSlotDoesNotChangeTheReasonOfAFailedOpen)
{
    // Closing this one fails for want of space.
    ASSERT_NE(cmdsvc::openCurrentFile("/dev/full", "w"), nullptr);
    ASSERT_NE(std::fputs("x", cmdsvc::currentFile()), EOF);
    errno = 0;
    EXPECT_EQ(cmdsvc::openCurrentFile("/tmp/missing"), nullptr);
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(Channel, errorExitsCloseRemoveAndTrace)
{
    for (const bool isWord : {false, true}) {
        watch::restart();
        root::writeFile(cmdsvc::kWorkFile, "x");
        cmdsvc::openCurrentFile(cmdsvc::kWorkFile);
        if (isWord) {
            EXPECT_EQ(cmdsvc::endWithWord(2), 0);
        } else {
            cmdsvc::endWithError(2);
        }
        EXPECT_EQ(cmdsvc::currentFile(), nullptr);
        EXPECT_FALSE(root::exists(cmdsvc::kWorkFile));
        EXPECT_EQ(watch::calls(), Lines{trace("exiting with error 0x00000002")});
    }
    EXPECT_EQ(answer(), "erro " + le32(2) + le32(2));
}

TEST_F(Channel, exitThatKeepsItsFileOnlyRemovesItWhereOneIsOpen)
{
    root::writeFile(cmdsvc::kWorkFile, "x");
    cmdsvc::endWithWordKeepingFile(3);
    EXPECT_TRUE(root::exists(cmdsvc::kWorkFile));
    cmdsvc::openCurrentFile(cmdsvc::kWorkFile);
    cmdsvc::endWithWordKeepingFile(3);
    EXPECT_FALSE(root::exists(cmdsvc::kWorkFile));
    EXPECT_NE(cmdsvc::currentFile(), nullptr);
    EXPECT_EQ(watch::calls(), (Lines(2, trace("exiting with error 0x00000003"))));
}

/// What happens in /tmp during an exit with a file open in the slot. The answer is not buffered, so
/// that its writing shows.
template <class Exit> Lines eventsOf(Exit exit)
{
    root::writeFile(cmdsvc::kWorkFile, "x");
    EXPECT_NE(cmdsvc::openCurrentFile(cmdsvc::kWorkFile), nullptr);
    std::setvbuf(fout_buf, nullptr, _IONBF, 0);
    const root::FileEvents events("/tmp");
    exit();
    return events.happened();
}

const Lines kTraceEvents = {"write dbg_vokcontrol.txt", "close dbg_vokcontrol.txt"};

TEST_F(Channel, errorExitsWriteThenCloseThenRemoveThenTrace)
{
    const Lines order = root::join(
        {{"write outbuf7", "close vokcontrol.tmp", "remove vokcontrol.tmp"}, kTraceEvents});
    EXPECT_EQ(eventsOf([] { cmdsvc::endWithWord(2); }), order);
    ASSERT_TRUE(cmdsvc::openChannel(7));
    EXPECT_EQ(eventsOf([] { cmdsvc::endWithError(2); }), order);
}

TEST_F(Channel, exitThatKeepsItsFileWritesThenRemovesThenTraces)
{
    EXPECT_EQ(eventsOf([] { cmdsvc::endWithWordKeepingFile(3); }),
              root::join({{"write outbuf7", "remove vokcontrol.tmp"}, kTraceEvents}));
}

// ---- Parameter lines --------------------------------------------------------------------------

class ParameterLine : public Channel {
  protected:
    /// Puts bytes into the request, at its start and with zeros behind them.
    static void put(std::string_view bytes)
    {
        std::ranges::fill(fin_buf, '\0');
        bytes.copy(std::data(fin_buf), std::size(fin_buf));
        ASSERT_TRUE(cmdsvc::openChannel(7));
    }

    /// Reads the next line; what the request line holds as text.
    static std::string next()
    {
        cmdsvc::readParameterLine();
        return cmdsvc::requestLine.data();
    }

    /// What the request line holds, whole.
    static std::string whole() { return {cmdsvc::requestLine.data(), cmdsvc::requestLine.size()}; }

    static void hold(std::string_view bytes)
    {
        cmdsvc::requestLine.fill('\0');
        bytes.copy(cmdsvc::requestLine.data(), cmdsvc::requestLine.size());
    }

    /// Cuts a newline, and compares what is left, zeros and all.
    static void expectCut(std::string_view bytes, bool isCut, std::string_view left)
    {
        hold(left);
        const std::string expected = whole();
        hold(bytes);
        EXPECT_EQ(cmdsvc::cutNewline(), isCut) << bytes;
        EXPECT_EQ(whole(), expected) << bytes;
    }
};

TEST_F(ParameterLine, linesFollowOneAnotherWithTheirNewlines)
{
    put("first\n\nthe third\n\xC3\xA9lise\r\n");
    EXPECT_EQ(next(), "first\n");
    EXPECT_EQ(next(), "\n");
    EXPECT_EQ(next(), "the third\n");
    EXPECT_EQ(next(), "\xC3\xA9lise\r\n");
}

TEST_F(ParameterLine, lineIsReadBehindTheRequestsFirst)
{
    put("pshr \x03" + std::string(3, '\0') + "\nMedia\n");
    cmdsvc::readRequestLine();
    EXPECT_EQ(next(), "Media\n");
}

TEST_F(ParameterLine, whatHasBeenReadBeforeDoesNotShow)
{
    put("ab\n");
    hold("a line that was longer\n");
    EXPECT_EQ(next(), "ab\n");
}

TEST_F(ParameterLine, lineThatIsNotThereReadsAsAnEmptyText)
{
    // Zeros are behind a request; they are bytes, too.
    put("anna\n");
    EXPECT_EQ(next(), "anna\n");
    EXPECT_EQ(next(), "");
}

TEST_F(ParameterLine, lineWithoutItsNewlineReadsAsItsText)
{
    put("anna");
    EXPECT_EQ(next(), "anna");
}

TEST_F(ParameterLine, zeroByteEndsTheTextButNotTheLine)
{
    put(std::string("an\0na\nbob\n", 10));
    EXPECT_EQ(next(), "an");
    EXPECT_EQ(whole().substr(0, 7), std::string("an\0na\n\0", 7));
    EXPECT_EQ(next(), "bob\n");
}

TEST_F(ParameterLine, longLineIsReadInPiecesOf4094Bytes)
{
    put(std::string(4094, 'n') + "m\n");
    hold(std::string(4096, '#'));
    cmdsvc::readParameterLine();
    EXPECT_EQ(whole(), std::string(4094, 'n') + '\0' + '#');
    EXPECT_EQ(next(), "m\n");
}

TEST_F(ParameterLine, newlineOfTheLongestWholeLineIsRead)
{
    put(std::string(4093, 'n') + "\nm\n");
    EXPECT_EQ(next(), std::string(4093, 'n') + "\n");
    EXPECT_EQ(next(), "m\n");
}

TEST_F(ParameterLine, requestLineStaysWhereNothingIsLeft)
{
    put(std::string(4094, 'n') + "m\n");
    EXPECT_EQ(next(), std::string(4094, 'n'));
    EXPECT_EQ(next(), "m\n");
    const std::string before = whole();
    cmdsvc::readParameterLine();
    EXPECT_EQ(whole(), before);
    hold("anna");
    EXPECT_EQ(next(), "anna");
}

TEST_F(ParameterLine, newlineAtTheEndIsCut)
{
    expectCut("anna\n", true, "anna");
    expectCut("\n", true, "");
    expectCut("anna\r\n", true, "anna\r");
    expectCut(std::string(4094, 'n') + "\n", true, std::string(4094, 'n'));
}

TEST_F(ParameterLine, oneNewlineIsCutAndNoMore)
{
    expectCut("anna\n\n", true, "anna\n");
    expectCut("\n\n", true, "\n");
}

TEST_F(ParameterLine, textThatEndsOtherwiseIsLeftAlone)
{
    expectCut("", false, "");
    expectCut("anna", false, "anna");
    expectCut("anna\r", false, "anna\r");
    expectCut("an\nna", false, "an\nna");
}

TEST_F(ParameterLine, newlineBehindAZeroByteIsNotSeen)
{
    const std::string line("an\0na\n", 6);
    expectCut(line, false, line);
    expectCut(std::string("\0\n", 2), false, std::string("\0\n", 2));
    expectCut(std::string("an\n\0na\n", 7), true, std::string("an\0\0na\n", 7));
}

} // namespace
