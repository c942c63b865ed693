// SPDX-License-Identifier: MIT
#include "page/administrators.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <sys/stat.h>

#include "page/private_files.h"
#include "tests/support/root.h"

namespace {

using config::Configuration;
using page::Administrators;

class AdministratorNames : public root::Test {
  protected:
    void SetUp() override
    {
        root::Test::SetUp();
        std::filesystem::remove_all(page::kKeptFolder);
        std::filesystem::create_directories("/var/lib");
    }

    static bool makeFirst(const std::string& name, const Configuration& settings = {})
    {
        return Administrators::makeFirst(settings, name, [] {});
    }
};

TEST_F(AdministratorNames, newApplianceHasNone)
{
    const Administrators none((Configuration()));
    EXPECT_TRUE(none.areNone());
    EXPECT_FALSE(none.contains("anna"));
    EXPECT_FALSE(none.contains(""));
}

TEST_F(AdministratorNames, configurationNamesSome)
{
    Configuration settings;
    settings.administrators = {"anna", "Élise the second"};
    const Administrators some(settings);
    EXPECT_FALSE(some.areNone());
    EXPECT_TRUE(some.contains("anna"));
    EXPECT_TRUE(some.contains("Élise the second"));
    EXPECT_FALSE(some.contains("Anna"));
    EXPECT_FALSE(some.contains("ann"));
    EXPECT_FALSE(some.contains(""));
}

TEST_F(AdministratorNames, firstOneIsKept)
{
    bool isCreated = false;
    EXPECT_TRUE(Administrators::makeFirst({}, "anna", [&isCreated] { isCreated = true; }));
    EXPECT_TRUE(isCreated);
    EXPECT_EQ(root::readFile(page::kAdministratorsFile), "anna\n");
    Configuration settings;
    settings.administrators = {"bob"};
    EXPECT_TRUE(Administrators(settings).contains("anna"));
    EXPECT_TRUE(Administrators(settings).contains("bob"));
}

TEST_F(AdministratorNames, thereIsOneFirst)
{
    EXPECT_TRUE(makeFirst("anna"));
    EXPECT_FALSE(Administrators::makeFirst({}, "bob", [] { FAIL() << "no account is made"; }));
    EXPECT_EQ(root::readFile(page::kAdministratorsFile), "anna\n");
}

TEST_F(AdministratorNames, configuredOneIsAFirst)
{
    Configuration settings;
    settings.administrators = {"anna"};
    EXPECT_FALSE(makeFirst("bob", settings));
    EXPECT_FALSE(root::exists(page::kAdministratorsFile));
}

TEST_F(AdministratorNames, nobodyBecomesOneWithoutAnAccount)
{
    EXPECT_THROW((void)Administrators::makeFirst(
                     {}, "anna", [] { throw std::runtime_error("the name is taken"); }),
                 std::runtime_error);
    EXPECT_TRUE(Administrators((Configuration())).areNone());
}

TEST_F(AdministratorNames, fileThatOthersCouldHaveWrittenIsAFailure)
{
    EXPECT_TRUE(makeFirst("anna"));
    ASSERT_EQ(::chmod(page::kAdministratorsFile, 0666), 0);
    EXPECT_THROW((void)Administrators(Configuration()), std::runtime_error);
}

} // namespace
