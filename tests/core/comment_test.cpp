// SPDX-License-Identifier: MIT
#include <cerrno>
#include <gtest/gtest.h>

#include "core/core.h"
#include "tests/support/root.h"

namespace {

std::string printed(const std::string& message)
{
    testing::internal::CaptureStdout();
    core::printComment("%s", message.c_str());
    return testing::internal::GetCapturedStdout();
}

TEST(Comment, messageIsWrappedAndEndsItsLine)
{
    testing::internal::CaptureStdout();
    core::printComment("found %d of %s", 2, "four");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "//<!-- found 2 of four-->\n");
}

TEST(Comment, longMessageIsCut)
{
    EXPECT_EQ(printed(std::string(1999, 'm')), "//<!-- " + std::string(1999, 'm') + "-->\n");
    EXPECT_EQ(printed(std::string(5000, 'm')), "//<!-- " + std::string(1999, 'm') + "-->\n");
}

TEST(Comment, isFlushedAtOnce)
{
    root::inChild([] {
        ASSERT_NE(std::freopen("/tmp/printed", "w", stdout), nullptr);
        core::printComment("x");
        EXPECT_EQ(root::readFile("/tmp/printed"), "//<!-- x-->\n");
    });
}

TEST(Comment, errnoIsNotChangedEvenIfNothingCanBePrinted)
{
    root::inChild([] {
        ASSERT_NE(std::freopen("/dev/full", "w", stdout), nullptr);
        errno = EIO;
        core::printComment("x");
        EXPECT_EQ(errno, EIO);
        EXPECT_NE(std::ferror(stdout), 0);
        std::clearerr(stdout);
    });
}

} // namespace
