// SPDX-License-Identifier: MIT
#include <array>
#include <gtest/gtest.h>

#include "core/core.h"

namespace {

TEST(FormatBounded, textThatFitsIsWhole)
{
    std::array<char, 8> out;
    core::formatBounded(out, "%s-%d", "abcd", 42);
    EXPECT_STREQ(out.data(), "abcd-42");
}

TEST(FormatBounded, longerTextIsCutAndBytesAfterTheBufferStay)
{
    std::array<char, 12> out;
    out.fill('#');
    core::formatBounded(std::span(out).first(8), "%s", "abcdefgh");
    EXPECT_EQ(std::string_view(out.data(), out.size()), std::string_view("abcdefg\0####", 12));
}

TEST(FormatBounded, smallestBuffersHoldATerminatorOrNothing)
{
    std::array<char, 2> out = {'#', '#'};
    core::formatBounded(std::span(out).first(0), "%s", "text");
    EXPECT_EQ(out[0], '#');
    core::formatBounded(std::span(out).first(1), "%s", "text");
    EXPECT_EQ(out[0], '\0');
    EXPECT_EQ(out[1], '#');
}

} // namespace
