// SPDX-License-Identifier: MIT
#include "client/answer.h"

#include <gtest/gtest.h>

#include "tests/support/root.h"

namespace {

using client::Answer;
using client::describeAnswer;
using client::readAnswer;
using client::Shape;
using root::le32;
using Lines = std::vector<std::string>;

const std::string kZero(1, '\0');

TEST(Answer, everyShapeIsKnownByItsBytes)
{
    EXPECT_EQ(readAnswer("").shape, Shape::kEmpty);
    EXPECT_EQ(readAnswer(le32(0)).shape, Shape::kWord);
    EXPECT_EQ(readAnswer("erro " + le32(2)).shape, Shape::kError);
    EXPECT_EQ(readAnswer("sub1 " + le32(2) + kZero).shape, Shape::kStatus);
    EXPECT_EQ(readAnswer("lsut " + le32(0) + "\n").shape, Shape::kHeader);
    for (const std::string& bytes :
         {std::string("abc"), std::string("erro1"), "erro " + le32(2) + "x",
          "sub1 " + le32(2) + kZero + "x", "lsut_" + le32(0) + "\n", std::string(100, 'x')}) {
        EXPECT_EQ(readAnswer(bytes).shape, Shape::kUnreadable) << bytes;
    }
}

TEST(Answer, valuesAreLittleEndian)
{
    EXPECT_EQ(readAnswer(le32(0xFF000003)).value, 0xFF000003U);
    EXPECT_EQ(readAnswer("erro " + le32(0x20000006)).value, 0x20000006U);
    const Answer status = readAnswer("sub1 " + le32(0xC2000002) + kZero);
    EXPECT_EQ(status.value, 0xC2000002U);
    EXPECT_EQ(status.tag, "sub1");
}

TEST(Answer, linesStandBehindAHeader)
{
    const Answer answer = readAnswer("lsut " + le32(2) + "\nanna\n\nbob");
    EXPECT_EQ(answer.tag, "lsut");
    EXPECT_EQ(answer.value, 2U);
    EXPECT_EQ(answer.lines, (Lines{"anna", "", "bob"}));
    EXPECT_FALSE(answer.trailingError);
}

TEST(Answer, errorBehindAHeadersLinesIsToldApart)
{
    const Answer answer = readAnswer("lsut " + le32(1) + "\nanna\nerro " + le32(0xFF000006));
    EXPECT_EQ(answer.lines, Lines{"anna"});
    EXPECT_EQ(answer.trailingError, 0xFF000006U);
    EXPECT_EQ(readAnswer("lsut " + le32(1) + "\nerro " + le32(7)).trailingError, 7U);
}

TEST(Answer, countOfTenDoesNotEndTheHeader)
{
    const Answer answer = readAnswer("lsut " + le32(10) + "\nanna\n");
    EXPECT_EQ(answer.value, 10U);
    EXPECT_EQ(answer.lines, Lines{"anna"});
}

TEST(Answer, isDescribedInWords)
{
    EXPECT_EQ(describeAnswer(readAnswer("")),
              "empty: the command was ignored, is not known, or failed before it answered");
    EXPECT_EQ(describeAnswer(readAnswer(le32(0))), "status 0x00000000: good");
    EXPECT_EQ(describeAnswer(readAnswer(le32(0xFF000003))),
              "status 0xFF000003: the command takes another number of parameters");
    EXPECT_EQ(describeAnswer(readAnswer("erro " + le32(0xABCDEF01))),
              "error 0xABCDEF01: not known to this client");
    EXPECT_EQ(describeAnswer(readAnswer("sub1 " + le32(0) + kZero)),
              "\"sub1\" with status 0x00000000: good");
    EXPECT_EQ(describeAnswer(readAnswer("lsut " + le32(1) + "\na\x1Bz\nerro " + le32(0xFF000006))),
              "\"lsut\" with count 1\n  a\\u{1b}z\nfollowed by an error, 0xFF000006: the appliance "
              "cannot remove its work file");
    EXPECT_EQ(describeAnswer(readAnswer("abc")), "of no shape that this client knows");
}

TEST(Answer, hexdumpShowsNumbersAndCharacters)
{
    EXPECT_EQ(client::hexdump(""), "");
    EXPECT_EQ(client::hexdump("lsut " + le32(1) + "\nan\xFF~\x7F z"),
              "00000000  6c 73 75 74 20 01 00 00 00 0a 61 6e ff 7e 7f 20  |lsut .....an.~. |\n"
              "00000010  7a                                               |z|\n");
}

} // namespace
