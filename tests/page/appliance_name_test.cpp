// SPDX-License-Identifier: MIT
#include "page/appliance_name.h"

#include <array>
#include <filesystem>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/page/visits.h"

namespace {

class ApplianceName : public root::Test {
  protected:
    void SetUp() override
    {
        root::Test::SetUp();
        visits::clearKept();
        visits::stubSystemScript();
    }

    static void call(const std::string& name)
    {
        root::writeFile("/stubs/tovGetNmbdSysname", "<nmbdSysname>" + name + "</nmbdSysname>\n");
    }

    static std::string hostName()
    {
        std::array<char, 256> name{};
        EXPECT_EQ(::gethostname(name.data(), name.size() - 1), 0);
        return name.data();
    }
};

TEST_F(ApplianceName, isAskedForAndKept)
{
    call("box");
    EXPECT_EQ(page::askApplianceName(), "box");
    EXPECT_EQ(page::lastApplianceName(), "box");
    EXPECT_EQ(root::readFile("/run/vokpage/name"), "box");
    call("new");
    EXPECT_EQ(page::lastApplianceName(), "box");
    EXPECT_EQ(page::askApplianceName(), "new");
    EXPECT_EQ(page::lastApplianceName(), "new");
}

TEST_F(ApplianceName, isTheMachinesUntilItIsAskedFor)
{
    EXPECT_EQ(page::lastApplianceName(), hostName());
    EXPECT_EQ(watch::calls(), std::vector<std::string>{});
    EXPECT_FALSE(root::exists("/run/vokpage"));
}

TEST_F(ApplianceName, isNotTakenFromAFileThatOthersMayWrite)
{
    call("box");
    EXPECT_EQ(page::askApplianceName(), "box");
    std::filesystem::permissions("/run/vokpage/name", std::filesystem::perms(0666));
    testing::internal::CaptureStderr();
    EXPECT_EQ(page::lastApplianceName(), hostName());
    EXPECT_EQ(page::askApplianceName(), "box");
    const std::string complaint =
        "vokpage: /run/vokpage/name is not private to the account that the pages run as\n";
    EXPECT_EQ(testing::internal::GetCapturedStderr(), complaint + complaint);
}

} // namespace
