// SPDX-License-Identifier: MIT
#include "client/text_table.h"

#include <array>
#include <gtest/gtest.h>

namespace {

using client::Align;
using client::layOutTable;
using client::TableRow;

TableRow row(std::initializer_list<const char*> cells)
{
    TableRow made;
    for (const char* cell : cells) {
        made.push_back(view::makePrintable(cell));
    }
    return made;
}

constexpr std::array kTwo = {Align::kLeft, Align::kLeft};
constexpr std::array kThree = {Align::kLeft, Align::kRight, Align::kLeft};

TEST(TextTable, columnIsAsWideAsItsWidestCell)
{
    EXPECT_EQ(layOutTable(kThree, {row({"SHARE", "USED", "STATE"}), row({"Media", "12345 K", "-"}),
                                   row({"Documents", "4 G", "1"})}),
              "SHARE         USED  STATE\n"
              "Media      12345 K  -\n"
              "Documents      4 G  1\n");
}

TEST(TextTable, nothingStandsBehindTheLastCell)
{
    EXPECT_EQ(layOutTable(kTwo, {row({"a", "long"}), row({"b", "l"})}), "a  long\nb  l\n");
    constexpr std::array kRightLast = {Align::kLeft, Align::kRight};
    EXPECT_EQ(layOutTable(kRightLast, {row({"a", "100"}), row({"b", "1"})}), "a  100\nb    1\n");
}

TEST(TextTable, widthCountsColumnsOfTheTerminalNotBytes)
{
    // Two columns for each of the Chinese characters, none for the accent that stands alone.
    EXPECT_EQ(layOutTable(kTwo, {row({"\xC3\x89lise", "1"}), row({"e\xCC\x81l", "2"}),
                                 row({"\xE4\xB8\xAD\xE6\x96\x87", "3"}), row({"abcde", "4"})}),
              "\xC3\x89lise  1\ne\xCC\x81l     2\n\xE4\xB8\xAD\xE6\x96\x87   3\nabcde  4\n");
}

TEST(TextTable, escapedCharactersCountAsTheyAreShown)
{
    EXPECT_EQ(layOutTable(kTwo, {row({"a\x1Bz", "1"}), row({"ab", "2"})}),
              "a\\u{1b}z  1\nab        2\n");
}

TEST(TextTable, emptyCellsKeepTheirPlace)
{
    EXPECT_EQ(layOutTable(kThree, {row({"", "", ""}), row({"a", "22", "b"})}),
              "       \na  22  b\n");
    EXPECT_EQ(layOutTable(kTwo, {row({"", ""})}), "  \n");
}

TEST(TextTable, oneColumnOneRowOrNone)
{
    constexpr std::array kOne = {Align::kLeft};
    EXPECT_EQ(layOutTable(kOne, {row({"a"}), row({"long"})}), "a\nlong\n");
    constexpr std::array kOneRight = {Align::kRight};
    EXPECT_EQ(layOutTable(kOneRight, {row({"a"}), row({"long"})}), "   a\nlong\n");
    EXPECT_EQ(layOutTable(kTwo, {row({"a", "b"})}), "a  b\n");
    EXPECT_EQ(layOutTable(kTwo, {}), "");
}

} // namespace
