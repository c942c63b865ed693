// SPDX-License-Identifier: MIT
#include "page/log.h"

#include <gtest/gtest.h>
#include <string>

namespace {

TEST(Log, isALineOnStandardError)
{
    testing::internal::CaptureStderr();
    page::log("something");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "vokpage: something\n");
}

TEST(Log, foreignTextStaysInItsLine)
{
    EXPECT_EQ(page::quoted("anna\nvokpage: logged in\x1B[2J"),
              "\"anna\\u{a}vokpage: logged in\\u{1b}[2J\"");
    EXPECT_EQ(page::quoted("\xFF"), "\"\\xff\"");
}

TEST(Log, foreignTextIsCut)
{
    EXPECT_EQ(page::quoted(std::string(64, 'x')), "\"" + std::string(64, 'x') + "\"");
    EXPECT_EQ(page::quoted(std::string(5000, 'x')), "\"" + std::string(64, 'x') + "\"");
}

} // namespace
