// SPDX-License-Identifier: MIT
#include "page/token.h"

#include <gtest/gtest.h>
#include <set>
#include <string>

namespace {

using page::isSameToken;
using page::isToken;
using page::makeToken;

const std::string kToken = "0123456789abcdef0123456789abcdef";

TEST(Token, isNeverTheSameTwice)
{
    std::set<std::string> tokens;
    for (int count = 0; count < 1000; ++count) {
        tokens.insert(makeToken());
    }
    EXPECT_EQ(tokens.size(), 1000U);
}

TEST(Token, hasItsForm)
{
    EXPECT_TRUE(isToken(makeToken()));
    EXPECT_TRUE(isToken(kToken));
    EXPECT_FALSE(isToken(""));
    EXPECT_FALSE(isToken(kToken + "0"));
    EXPECT_FALSE(isToken(kToken.substr(1)));
    EXPECT_FALSE(isToken(kToken.substr(1) + "F"));
    EXPECT_FALSE(isToken(kToken.substr(1) + "\n"));
}

TEST(Token, isTheSameOnlyInEveryDigit)
{
    EXPECT_TRUE(isSameToken(kToken, std::string(kToken)));
    for (std::size_t at = 0; at < kToken.size(); ++at) {
        std::string other = kToken;
        other[at] = (other[at] == '0') ? '1' : '0';
        EXPECT_FALSE(isSameToken(kToken, other)) << at;
    }
}

TEST(Token, thatIsMissingIsNeverTheSame)
{
    EXPECT_FALSE(isSameToken("", ""));
    EXPECT_FALSE(isSameToken("x", "x"));
    EXPECT_FALSE(isSameToken(kToken, ""));
    EXPECT_FALSE(isSameToken("", kToken));
}

} // namespace
