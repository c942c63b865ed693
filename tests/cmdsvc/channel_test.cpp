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

cmdsvc::Channel& channel()
{
    return cmdsvc::channel();
}

/// A channel with a current request.
class Channel : public root::Test {
  protected:
    void SetUp() override
    {
        root::Test::SetUp();
        std::ranges::fill(fin_buf, '\0');
        ASSERT_TRUE(channel().open(7));
    }

    void TearDown() override
    {
        channel().closeFile();
        channel().close();
        root::Test::TearDown();
    }

    static std::string answer()
    {
        channel().close();
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
    channel().writeWord(cmdsvc::kMalformed);
    EXPECT_EQ(answer(), "\x03" + std::string(2, '\0') + "\xFF");
    ASSERT_TRUE(channel().open(7));
    channel().begin(cmdsvc::command("lstu"));
    EXPECT_EQ(channel().writeHeader(0x01020304), 10U);
    EXPECT_EQ(answer(), "lsut \x04\x03\x02\x01\n");
    ASSERT_TRUE(channel().open(7));
    channel().endWithError(cmdsvc::kUserListEmpty);
    EXPECT_EQ(answer(), "erro " + le32(0x20000006));
}

TEST_F(Channel, tagIsTheCommandsOwn)
{
    channel().begin(cmdsvc::command("wags"));
    EXPECT_EQ(channel().tag(), "wags ");
    const cmdsvc::HeaderBytes bytes = channel().header(2);
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "wags " + le32(2) + "\n");
}

TEST_F(Channel, writingReturnsTheNumberOfBytes)
{
    EXPECT_EQ(channel().write({"a\0b", 3}), 3U);
    EXPECT_EQ(answer(), std::string("a\0b", 3));
    ASSERT_TRUE(channel().open(7));
    request::loseAnswer();
    EXPECT_EQ(channel().write("abc"), 0U);
}

TEST_F(Channel, answerThatCannotBeOpenedIsAFailureAndThePreviousOneIsWhole)
{
    channel().writeWord(cmdsvc::kGood);
    std::filesystem::create_directory("/tmp/outbuf8");
    EXPECT_FALSE(channel().open(8));
    EXPECT_EQ(fout_buf, nullptr);
    EXPECT_EQ(root::readFile("/tmp/outbuf7"), le32(0));
}

TEST_F(Channel, statusFrameHasNameAndCode)
{
    EXPECT_EQ(SendReturnStatus(0xC2000002, "sub1"), 0);
    EXPECT_EQ(watch::calls(),
              Lines{trace("SendReturnStatus errCode 0xC2000002 -- fwrite return: 10")});
    EXPECT_EQ(answer(), "sub1 " + le32(0xC2000002) + std::string(1, '\0'));
}

TEST_F(Channel, statusFrameReturnsTheResultOfItsTrace)
{
    watch::answer("echo", 0x500, 0);
    EXPECT_EQ(SendReturnStatus(0, "subs"), 0x500);
    EXPECT_EQ(answer(), "subs " + le32(0) + std::string(1, '\0'));
}

TEST_F(Channel, statusFrameTracesTheNumberOfBytesWritten)
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

TEST_F(Channel, codeHasTheSamePlaceAfterAShortName)
{
    SendReturnStatus(1, "ab");
    EXPECT_EQ(answer(), std::string("ab \0\0", 5) + le32(1) + std::string(1, '\0'));
}

TEST_F(Channel, answerThatACallerHasSetIsNotClosed)
{
    FILE* theirs = std::fopen("/tmp/theirs", "w");
    fout_buf = theirs;
    SendReturnStatus(1, "subs");
    ASSERT_TRUE(channel().open(8));
    EXPECT_EQ(std::fclose(theirs), 0);
    EXPECT_EQ(root::readFile("/tmp/theirs"), "subs " + le32(1) + std::string(1, '\0'));
}

// ---- The current-file slot --------------------------------------------------------------------

std::size_t openFiles()
{
    return root::list("/proc/self/fd").size();
}

TEST_F(Channel, slotHoldsOneFile)
{
    root::writeFile("/tmp/file", "x");
    const std::size_t before = openFiles();
    for (int i = 0; i < 20; ++i) {
        ASSERT_NE(channel().openFile("/tmp/file"), nullptr);
    }
    EXPECT_EQ(openFiles(), before + 1);
    EXPECT_EQ(channel().openFile("/tmp/missing"), nullptr);
    EXPECT_EQ(openFiles(), before);
}

TEST_F(Channel, closingClearsTheSlot)
{
    root::writeFile("/tmp/file", "x");
    const std::size_t before = openFiles();
    ASSERT_NE(channel().openFile("/tmp/file"), nullptr);
    EXPECT_TRUE(channel().closeFile());
    EXPECT_EQ(openFiles(), before);
    EXPECT_TRUE(channel().closeFile()) << "a second close does nothing";
}

TEST_F(Channel, failedCloseIsReturnedAndClearsTheSlot)
{
    FILE* file = channel().openFile("/dev/full", "w");
    ASSERT_NE(std::fputs("x", file), EOF);
    EXPECT_FALSE(channel().closeFile());
    EXPECT_EQ(errno, ENOSPC);
    EXPECT_TRUE(channel().closeFile());
}

TEST_F(Channel, olderFileOfTheSlotDoesNotChangeTheReasonOfAFailedOpen)
{
    // Closing this file fails because the device is full.
    FILE* file = channel().openFile("/dev/full", "w");
    ASSERT_NE(std::fputs("x", file), EOF);
    errno = 0;
    EXPECT_EQ(channel().openFile("/tmp/missing"), nullptr);
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(Channel, errorExitsCloseRemoveAndTrace)
{
    const std::size_t before = openFiles();
    for (const bool isWord : {false, true}) {
        watch::restart();
        root::writeFile(cmdsvc::kWorkFile, "x");
        channel().openFile(cmdsvc::kWorkFile);
        if (isWord) {
            EXPECT_EQ(channel().endWithWord(cmdsvc::kRemoteBadRequest), 0);
        } else {
            channel().endWithError(cmdsvc::kRemoteBadRequest);
        }
        EXPECT_EQ(openFiles(), before);
        EXPECT_FALSE(root::exists(cmdsvc::kWorkFile));
        EXPECT_EQ(watch::calls(), Lines{trace("exiting with error 0x00000002")});
    }
    EXPECT_EQ(answer(), "erro " + le32(2) + le32(2));
}

TEST_F(Channel, wordExitReturnsTheResultOfItsTrace)
{
    watch::answer("echo", 0x500, 0);
    EXPECT_EQ(channel().endWithWord(cmdsvc::kMalformed), 0x500);
}

TEST_F(Channel, exitThatKeepsItsFileOnlyRemovesItIfOneIsOpen)
{
    root::writeFile(cmdsvc::kWorkFile, "x");
    channel().endWithWordKeepingFile(cmdsvc::kRemoteFailed);
    EXPECT_TRUE(root::exists(cmdsvc::kWorkFile));
    channel().openFile(cmdsvc::kWorkFile);
    const std::size_t before = openFiles();
    channel().endWithWordKeepingFile(cmdsvc::kRemoteFailed);
    EXPECT_FALSE(root::exists(cmdsvc::kWorkFile));
    EXPECT_EQ(openFiles(), before);
    EXPECT_EQ(watch::calls(), (Lines(2, trace("exiting with error 0x00000003"))));
    EXPECT_EQ(answer(), le32(3) + le32(3));
}

/// The events in /tmp during an exit with a file open in the slot. The answer is not buffered, so
/// that its writes are seen.
template <class Exit> Lines eventsOf(Exit exit)
{
    root::writeFile(cmdsvc::kWorkFile, "x");
    EXPECT_NE(channel().openFile(cmdsvc::kWorkFile), nullptr);
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
    EXPECT_EQ(eventsOf([] { channel().endWithWord(cmdsvc::kRemoteBadRequest); }), order);
    ASSERT_TRUE(channel().open(7));
    EXPECT_EQ(eventsOf([] { channel().endWithError(cmdsvc::kRemoteBadRequest); }), order);
}

TEST_F(Channel, exitThatKeepsItsFileWritesThenRemovesThenTraces)
{
    EXPECT_EQ(eventsOf([] { channel().endWithWordKeepingFile(cmdsvc::kRemoteFailed); }),
              root::join({{"write outbuf7", "remove vokcontrol.tmp"}, kTraceEvents}));
}

// ---- Parameter lines --------------------------------------------------------------------------

class ParameterLine : public Channel {
  protected:
    static constexpr cmdsvc::Parameter kLine = cmdsvc::parameter("crat", "user");
    static constexpr cmdsvc::Parameter kShortLine = cmdsvc::parameter("wall", "user");

    /// Puts parameters into the request, after a first line and with zeros after them.
    static void put(std::string_view bytes)
    {
        std::ranges::fill(fin_buf, '\0');
        fin_buf[0] = '\n';
        bytes.copy(std::data(fin_buf) + 1, std::size(fin_buf) - 1);
        ASSERT_TRUE(channel().open(7));
    }

    /// Takes the next line. Returns its text.
    static std::string next(const cmdsvc::Parameter& parameter = kLine)
    {
        return channel().takeLine(parameter).text();
    }

    static std::string whole(const cmdsvc::ParameterLine& line)
    {
        return {line.bytes.data(), line.bytes.size()};
    }

    static std::string padded(std::string text)
    {
        text.resize(4096);
        return text;
    }

    /// Cuts a newline, and compares the rest, zeros included.
    static void expectCut(std::string_view bytes, bool isCut, std::string_view left)
    {
        cmdsvc::ParameterLine line;
        bytes.copy(line.bytes.data(), line.bytes.size());
        EXPECT_EQ(line.cutNewline(), isCut) << bytes;
        EXPECT_EQ(whole(line), padded(std::string(left))) << bytes;
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

TEST_F(ParameterLine, lineIsACopyWithZerosAfterIt)
{
    put("a line that is longer\nab\n");
    const cmdsvc::ParameterLine first = channel().takeLine(kLine);
    const cmdsvc::ParameterLine second = channel().takeLine(kLine);
    EXPECT_EQ(whole(first), padded("a line that is longer\n"));
    EXPECT_EQ(whole(second), padded("ab\n"));
    EXPECT_FALSE(second.isMissing);
}

TEST_F(ParameterLine, missingLineIsAnEmptyText)
{
    // The zeros after a request are part of its last line.
    put("anna\n");
    EXPECT_EQ(next(), "anna\n");
    const cmdsvc::ParameterLine line = channel().takeLine(kLine);
    EXPECT_EQ(whole(line), padded(""));
    EXPECT_FALSE(line.isMissing);
}

TEST_F(ParameterLine, lineWithoutANewlineIsTakenWhole)
{
    put("anna");
    EXPECT_EQ(next(), "anna");
}

TEST_F(ParameterLine, zeroByteEndsTheTextButNotTheLine)
{
    put(std::string("an\0na\nbob\n", 10));
    const cmdsvc::ParameterLine line = channel().takeLine(kLine);
    EXPECT_EQ(whole(line), padded(std::string("an\0na\n", 6)));
    EXPECT_STREQ(line.text(), "an");
    EXPECT_EQ(next(), "bob\n");
}

TEST_F(ParameterLine, longLineIsTakenInPiecesOfTheSizeInItsRow)
{
    put(std::string(4094, 'n') + "m");
    EXPECT_EQ(next(), std::string(4094, 'n'));
    EXPECT_EQ(next(), "m");
    put(std::string(255, 'n') + "m\n");
    EXPECT_EQ(next(kShortLine), std::string(255, 'n'));
    EXPECT_EQ(next(kShortLine), "m\n");
}

TEST_F(ParameterLine, newlineOfTheLongestWholeLineIsTaken)
{
    put(std::string(4093, 'n') + "\nm");
    EXPECT_EQ(next(), std::string(4093, 'n') + "\n");
    EXPECT_EQ(next(), "m");
}

TEST_F(ParameterLine, ifNothingIsLeftThePreviousLineIsTakenWithoutItsNewline)
{
    put(std::string(4093, 'n') + "m\n");
    EXPECT_EQ(next(), std::string(4093, 'n') + "m");
    EXPECT_EQ(next(), "\n");
    for (int i = 0; i < 2; ++i) {
        const cmdsvc::ParameterLine line = channel().takeLine(kLine);
        EXPECT_EQ(whole(line), padded(""));
        EXPECT_TRUE(line.isMissing);
    }
    put(std::string(4092, 'n') + "\nx\n");
    EXPECT_EQ(next().size(), 4093U);
    EXPECT_EQ(next(), "x\n");
    EXPECT_EQ(next(), "x");
}

TEST_F(ParameterLine, missingLineDoesNotAffectTheNextRequest)
{
    put(std::string(4094, 'n') + "\n");
    next();
    next();
    EXPECT_TRUE(channel().takeLine(kLine).isMissing);
    put("anna\n");
    const cmdsvc::ParameterLine line = channel().takeLine(kLine);
    EXPECT_FALSE(line.isMissing);
    EXPECT_STREQ(line.text(), "anna\n");
}

TEST_F(ParameterLine, newlineAtTheEndIsCut)
{
    expectCut("anna\n", true, "anna");
    expectCut("\n", true, "");
    expectCut("anna\r\n", true, "anna\r");
    expectCut(std::string(4094, 'n') + "\n", true, std::string(4094, 'n'));
}

TEST_F(ParameterLine, onlyOneNewlineIsCut)
{
    expectCut("anna\n\n", true, "anna\n");
    expectCut("\n\n", true, "\n");
}

TEST_F(ParameterLine, textWithoutANewlineAtItsEndIsNotChanged)
{
    expectCut("", false, "");
    expectCut("anna", false, "anna");
    expectCut("anna\r", false, "anna\r");
    expectCut("an\nna", false, "an\nna");
}

TEST_F(ParameterLine, newlineAfterAZeroByteIsNotCut)
{
    const std::string line("an\0na\n", 6);
    expectCut(line, false, line);
    expectCut(std::string("\0\n", 2), false, std::string("\0\n", 2));
    expectCut(std::string("an\n\0na\n", 7), true, std::string("an\0\0na\n", 7));
}

TEST_F(ParameterLine, lineIsCopiedUpToItsZeroByte)
{
    cmdsvc::ParameterLine line;
    std::string_view("anna\0x", 6).copy(line.bytes.data(), 6);
    core::Text copy;
    EXPECT_EQ(line.copyTo(copy), cmdsvc::kGood);
    EXPECT_STREQ(copy.get(), "anna");
}

} // namespace
