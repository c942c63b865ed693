// SPDX-License-Identifier: MIT
#include "cmdsvc/channel.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>

#include "cmdsvc/protocol.h"
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

} // namespace
