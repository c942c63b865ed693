// SPDX-License-Identifier: MIT
#include "client/doctor_lines.h"

#include <gtest/gtest.h>

namespace {

using client::after;
using client::between;
using client::Lines;
using client::linesOf;
using client::quoteStart;

TEST(DoctorLines, lineNeedsNoNewlineAtTheEnd)
{
    EXPECT_EQ(linesOf(""), Lines());
    EXPECT_EQ(linesOf("a\n\nb"), (Lines{"a", "", "b"}));
    EXPECT_EQ(linesOf("a\nb\n"), (Lines{"a", "b"}));
}

TEST(DoctorLines, textBetweenMarksNeedsBoth)
{
    EXPECT_EQ(between("x <a>name</a>", "<a>", "</a>"), "name");
    EXPECT_EQ(between("<a></a>", "<a>", "</a>"), "");
    EXPECT_EQ(between("<a>name", "<a>", "</a>"), std::nullopt);
    EXPECT_EQ(between("</a>name", "<a>", "</a>"), std::nullopt);
}

TEST(DoctorLines, textAfterAMarkEndsWithTheLine)
{
    EXPECT_EQ(after("one\nsize: 5 GB\nsize: 6\n", "size: "), "5 GB");
    EXPECT_EQ(after("size:", "size:"), "");
    EXPECT_EQ(after("one\n", "size: "), std::nullopt);
}

TEST(DoctorLines, quotedTextIsCut)
{
    EXPECT_EQ(quoteStart(""), "\"\"");
    EXPECT_EQ(quoteStart(std::string(60, 'a')), "\"" + std::string(60, 'a') + "\"");
    EXPECT_EQ(quoteStart(std::string(60, 'a') + "b"), "\"" + std::string(60, 'a') + "\"");
}

} // namespace
