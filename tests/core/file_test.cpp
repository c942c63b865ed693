// SPDX-License-Identifier: MIT
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

#include "core/core.h"
#include "tests/support/root.h"

namespace {

using Lines = std::vector<std::string>;

class File : public root::Test {};

TEST_F(File, linesLongerThanTheBufferAreReadInPieces)
{
    root::writeFile("/tmp/in", "abcdefg\nxy\n\nlast");
    const core::File file = core::openFile("/tmp/in", "r");
    std::array<char, 5> line;
    Lines pieces;
    while (core::readLine(file.get(), line)) {
        pieces.emplace_back(line.data());
    }
    EXPECT_EQ(pieces, (Lines{"abcd", "efg\n", "xy\n", "\n", "last"}));
    EXPECT_STREQ(line.data(), "");
}

TEST_F(File, zeroByteEndsTheText)
{
    root::writeFile("/tmp/in", std::string("ab\0cd\nef\n", 9));
    const core::File file = core::openFile("/tmp/in", "r");
    std::array<char, 64> line;
    EXPECT_TRUE(core::readLine(file.get(), line));
    EXPECT_STREQ(line.data(), "ab");
    EXPECT_TRUE(core::readLine(file.get(), line));
    EXPECT_STREQ(line.data(), "ef\n");
}

TEST_F(File, emptyFileAndFolderHaveNoLine)
{
    root::writeFile("/tmp/empty", "");
    for (const char* path : {"/tmp/empty", "/tmp"}) {
        const core::File file = core::openFile(path, "r");
        ASSERT_TRUE(file) << path;
        std::array<char, 8> line = {'x', '\0'};
        EXPECT_FALSE(core::readLine(file.get(), line)) << path;
        EXPECT_STREQ(line.data(), "") << path;
    }
}

TEST_F(File, textBeforeAReadErrorIsNoLine)
{
    const auto readOnce = [](void* isRead, char* buffer, std::size_t /*size*/) -> ssize_t {
        if (std::exchange(*static_cast<bool*>(isRead), true)) {
            errno = EIO;
            return -1;
        }
        std::memcpy(buffer, "half a", 6);
        return 6;
    };
    bool isRead = false;
    cookie_io_functions_t functions{};
    functions.read = readOnce;
    const core::File file(::fopencookie(&isRead, "r", functions));
    std::array<char, 64> line = {'x', '\0'};
    EXPECT_FALSE(core::readLine(file.get(), line));
    EXPECT_STREQ(line.data(), "");
}

TEST_F(File, failureToOpenSetsErrno)
{
    EXPECT_FALSE(core::openFile("/tmp/missing", "r"));
    EXPECT_EQ(errno, ENOENT);
    EXPECT_FALSE(core::openFile("/tmp", "w"));
    EXPECT_EQ(errno, EISDIR);
}

TEST_F(File, shellLinesDoNotInheritIt)
{
    watch::mayBeStrange("[ !");
    root::writeFile("/tmp/in", "");
    const core::File file = core::openFile("/tmp/in", "r");
    core::runShellLine(
        ("[ ! -e /proc/$$/fd/" + std::to_string(::fileno(file.get())) + " ] || echo open >/tmp/out")
            .c_str());
    EXPECT_FALSE(root::exists("/tmp/out"));
}

TEST_F(File, numberIsReadFromTheFirstLine)
{
    const auto expectNumber = [](const std::string& content, std::int32_t number) {
        root::writeFile("/tmp/in", content);
        EXPECT_EQ(core::readNumber(core::openFile("/tmp/in", "r").get(), 77), number) << content;
    };
    expectNumber("2\n", 2);
    expectNumber(" -12 drives\n4\n", -12);
    expectNumber("none\n3\n", 0);
    expectNumber("\n", 0);
    expectNumber("\n3\n", 0);
    expectNumber(std::string("\0003\n", 3), 0);
    expectNumber("", 77);
    expectNumber("2147483648\n", -2147483647 - 1);
    expectNumber("4294967298\n", 2);
    expectNumber(std::string(510, '0') + "12\n", 1);
}

TEST_F(File, folderHoldsNoNumber)
{
    EXPECT_EQ(core::readNumber(core::openFile("/tmp", "r").get(), 77), 77);
}

TEST_F(File, workFileNamesEndInTheProcessId)
{
    EXPECT_EQ(core::workFileName("share_info").data(), root::workFile("share_info"));
    root::inChild([] {
        EXPECT_EQ(core::workFileName("outbuf").data(), "/tmp/outbuf" + std::to_string(::getpid()));
    });
}

TEST_F(File, removedWorkFileIsNotTraced)
{
    root::writeFile("/tmp/work", "");
    core::removeWorkFile("/tmp/work");
    EXPECT_EQ(root::list("/tmp"), Lines{});
    EXPECT_EQ(watch::calls(), Lines{});
}

TEST_F(File, workFileThatCannotBeRemovedIsTraced)
{
    core::removeWorkFile("/tmp/missing");
    EXPECT_EQ(watch::calls(), Lines{root::trace("cannot remove file /tmp/missing: No such file or "
                                                "directory")});
}

} // namespace
