// SPDX-License-Identifier: MIT
#include <filesystem>
#include <gtest/gtest.h>

#include "tests/support/root.h"
#include "vokcontrol.h"

namespace {

constexpr const char* kFile = "/etc/buildinfo.txt";

class BuildInfo : public root::Test {
  protected:
    void TearDown() override
    {
        std::filesystem::remove(kFile);
        root::Test::TearDown();
    }

    static void expectInfo(const std::string& content, const std::string& info)
    {
        root::writeFile(kFile, content);
        EXPECT_EQ(getBuildInfo(), info);
        EXPECT_EQ(watch::calls(), std::vector<std::string>{});
    }
};

TEST_F(BuildInfo, resultIsTheFirstLineWithoutItsNewline)
{
    expectInfo("Tower 1.2.3 (build 45)\nsecond\n", "Tower 1.2.3 (build 45)");
}

TEST_F(BuildInfo, lineWithoutANewlineKeepsItsLastCharacter)
{
    expectInfo("1.2.3", "1.2.3");
}

TEST_F(BuildInfo, carriageReturnStays)
{
    expectInfo("1.2.3\r\nsecond\r\n", "1.2.3\r");
    expectInfo("1.2\r3\n", "1.2\r3");
}

TEST_F(BuildInfo, resultIsEmptyForAnEmptyFirstLineOrFile)
{
    expectInfo("\nx", "");
    expectInfo("", "");
}

TEST_F(BuildInfo, longLineIsCut)
{
    expectInfo(std::string(600, 'x') + "\n", std::string(511, 'x'));
}

TEST_F(BuildInfo, missingFileIsEmptyEvenAfterAnEarlierResult)
{
    expectInfo("1.2.3\n", "1.2.3");
    std::filesystem::remove(kFile);
    EXPECT_STREQ(getBuildInfo(), "");
}

} // namespace
