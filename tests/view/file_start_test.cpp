// SPDX-License-Identifier: MIT
#include "view/file_start.h"

#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/support/root.h"

namespace {

class FileStart : public root::Test {};

TEST_F(FileStart, bytesAndTimeOfAFile)
{
    root::writeFile("/tmp/file", std::string("a\0b\n", 4));
    const view::FileStart start = view::readFileStart("/tmp/file", 100);
    EXPECT_EQ(start.bytes, std::string("a\0b\n", 4));
    EXPECT_LE(std::time(nullptr) - start.modified, 5);
    EXPECT_EQ(start.error, 0);
}

TEST_F(FileStart, noMoreThanWasAskedFor)
{
    root::writeFile("/tmp/file", "abcdef");
    EXPECT_EQ(view::readFileStart("/tmp/file", 4).bytes, "abcd");
    EXPECT_EQ(view::readFileStart("/tmp/file", 0).bytes, "");
}

TEST_F(FileStart, ofAFileOfThreeGibibytes)
{
    root::writeFile("/tmp/file", "abc");
    std::filesystem::resize_file("/tmp/file", 3221225472U);
    const view::FileStart start = view::readFileStart("/tmp/file", 4);
    EXPECT_EQ(start.bytes, std::string("abc\0", 4));
    EXPECT_EQ(start.error, 0);
}

TEST_F(FileStart, timesRunOnAfter2038)
{
    constexpr std::time_t kYear2040 = 2208988800;
    root::writeFile("/tmp/file", "abc");
    const timespec when[2] = {{kYear2040, 0}, {kYear2040, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, "/tmp/file", when, 0), 0);
    EXPECT_EQ(view::readFileStart("/tmp/file", 4).modified, kYear2040);
}

TEST_F(FileStart, reasonWhyThereIsNone)
{
    root::writeFile("/tmp/closed", "");
    std::filesystem::permissions("/tmp/closed", std::filesystem::perms(0));
    EXPECT_EQ(view::readFileStart("/tmp/missing", 4).error, ENOENT);
    EXPECT_EQ(view::readFileStart("/tmp/closed", 4).error, EACCES);
    EXPECT_EQ(view::readFileStart("/tmp", 4).error, EISDIR);
}

TEST_F(FileStart, isOpenEvenIfItCannotBeRead)
{
    root::writeFile("/tmp/file", "abc");
    EXPECT_TRUE(view::readFileStart("/tmp/file", 4).isOpen);
    EXPECT_TRUE(view::readFileStart("/tmp", 4).isOpen);
    EXPECT_FALSE(view::readFileStart("/tmp/missing", 4).isOpen);
}

} // namespace
