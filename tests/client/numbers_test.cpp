// SPDX-License-Identifier: MIT
#include "client/numbers.h"

#include <gtest/gtest.h>

namespace {

TEST(Numbers, rangeIncludesBothEnds)
{
    const CLI::Validator check = client::numberFrom("--full", 1, 100);
    EXPECT_EQ(check.get_description(), "UINT in [1 - 100]");
    for (const char* text : {"1", "50", "100"}) {
        EXPECT_EQ(check(std::string(text)), "") << text;
    }
    for (const char* text : {"0", "101", "-1", "abc", "", "5x", "0.5", "99999999999999999999"}) {
        EXPECT_EQ(check(std::string(text)), "--full needs a number from 1 to 100.") << text;
    }
}

TEST(Numbers, secondsAreAboveZero)
{
    const CLI::Validator check = client::secondsAboveZero("--timeout");
    EXPECT_EQ(check.get_description(), "POSITIVE");
    for (const char* text : {"1", "3600", "4294967295"}) {
        EXPECT_EQ(check(std::string(text)), "") << text;
    }
    for (const char* text : {"0", "-1", "abc", "", "0.5", "4294967296"}) {
        EXPECT_EQ(check(std::string(text)), "--timeout needs a number of seconds above 0.") << text;
    }
}

} // namespace
