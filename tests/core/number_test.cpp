// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <limits>

#include "core/core.h"

namespace {

using Limits64 = std::numeric_limits<std::int64_t>;

TEST(Number, startOfATextIsReadAsDecimal)
{
    EXPECT_EQ(core::decimalNumber("0"), 0);
    EXPECT_EQ(core::decimalNumber("12 drives\n"), 12);
    EXPECT_EQ(core::decimalNumber(" \t\n\v\f\r7"), 7);
    EXPECT_EQ(core::decimalNumber("+6"), 6);
    EXPECT_EQ(core::decimalNumber("-3x"), -3);
    EXPECT_EQ(core::decimalNumber("010"), 10);
    EXPECT_EQ(core::decimalNumber("0x10"), 0);
    EXPECT_EQ(core::decimalNumber("2.9"), 2);
}

TEST(Number, textWithoutANumberIsZero)
{
    for (const char* text : {"", "\n", "x1", "-", "+ 1", "- 1", "--1", ".5"}) {
        EXPECT_EQ(core::decimalNumber(text), 0) << text;
        EXPECT_EQ(core::decimalInt(text), 0) << text;
    }
}

TEST(Number, sixtyFourBitsAreWhole)
{
    EXPECT_EQ(core::decimalNumber("2147483648"), 2147483648);
    EXPECT_EQ(core::decimalNumber("-2147483649"), -2147483649);
    EXPECT_EQ(core::decimalNumber("99999999999"), 99999999999);
    EXPECT_EQ(core::decimalNumber("9223372036854775807"), Limits64::max());
    EXPECT_EQ(core::decimalNumber("-9223372036854775808"), Limits64::min());
}

TEST(Number, numberBeyondSixtyFourBitsIsTheNearestWithin)
{
    EXPECT_EQ(core::decimalNumber("9223372036854775808"), Limits64::max());
    EXPECT_EQ(core::decimalNumber("-9223372036854775809"), Limits64::min());
}

TEST(Number, numberBeyondThirtyTwoBitsKeepsItsLowBits)
{
    EXPECT_EQ(core::decimalInt("12 drives\n"), 12);
    EXPECT_EQ(core::decimalInt("2147483647"), 2147483647);
    EXPECT_EQ(core::decimalInt("-2147483648"), -2147483647 - 1);
    EXPECT_EQ(core::decimalInt("2147483648"), -2147483647 - 1);
    EXPECT_EQ(core::decimalInt("4294967295"), -1);
    EXPECT_EQ(core::decimalInt("4294967296"), 0);
    EXPECT_EQ(core::decimalInt("4294967297"), 1);
    EXPECT_EQ(core::decimalInt("-2147483649"), 2147483647);
    EXPECT_EQ(core::decimalInt("99999999999"), 1215752191);
    EXPECT_EQ(core::decimalInt("9223372036854775808"), -1);
    EXPECT_EQ(core::decimalInt("-9223372036854775809"), 0);
}

} // namespace
