// SPDX-License-Identifier: MIT
#include "client/nearest_word.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

using client::nearestWord;

const std::vector<std::string> kWords = {"status", "shares", "users", "setup", "check", "raw"};

TEST(NearestWord, isTheOneWithTheFewestMistakes)
{
    EXPECT_EQ(nearestWord("status", kWords), "status");
    EXPECT_EQ(nearestWord("statsu", kWords), "status") << "two letters in each other's place";
    EXPECT_EQ(nearestWord("stattus", kWords), "status") << "a letter too many";
    EXPECT_EQ(nearestWord("stats", kWords), "status") << "one is missing";
    EXPECT_EQ(nearestWord("statut", kWords), "status") << "a wrong one";
    EXPECT_EQ(nearestWord("shars", kWords), "shares");
    EXPECT_EQ(nearestWord("user", kWords), "users");
    EXPECT_EQ(nearestWord("sheres", kWords), "shares");
    EXPECT_EQ(nearestWord("sttaus", kWords), "status");
    EXPECT_EQ(nearestWord("sttasu", kWords), "status") << "two mistakes";
}

TEST(NearestWord, isNoneIfTooMuchIsWrong)
{
    EXPECT_EQ(nearestWord("stsu", kWords), "") << "two mistakes in four letters";
    EXPECT_EQ(nearestWord("xtatsuu", kWords), "") << "three mistakes";
    EXPECT_EQ(nearestWord("ra", kWords), "") << "two letters may mean anything";
    EXPECT_EQ(nearestWord("row", kWords), "raw");
    EXPECT_EQ(nearestWord("", kWords), "");
    EXPECT_EQ(nearestWord("status", {}), "");
    EXPECT_EQ(nearestWord(std::string(1000, 's'), kWords), "");
}

TEST(NearestWord, ofSeveralIsTheFirst)
{
    EXPECT_EQ(nearestWord("cat", std::vector<std::string>{"bat", "car"}), "bat");
    EXPECT_EQ(nearestWord("cat", std::vector<std::string>{"bat", "cat"}), "cat");
}

} // namespace
