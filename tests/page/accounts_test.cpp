// SPDX-License-Identifier: MIT
#include "page/accounts.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "client/failure.h"
#include "tests/page/service.h"

namespace {

using config::Configuration;
using page::Credentials;

class Accounts : public root::Test {
  protected:
    static Configuration settings()
    {
        Configuration made;
        made.socket = FakeService::kSocket;
        return made;
    }

    static std::optional<std::string> check(const Credentials& credentials)
    {
        return page::checkPassword(settings(), credentials);
    }
};

const std::string kAskForUsers = "lstu " + root::le32(0) + "\n";

TEST_F(Accounts, rightPasswordGivesTheNameAsTheApplianceWritesIt)
{
    const FakeService service({answers::kPasswordRight, answers::kUsers});
    EXPECT_EQ(check({"ANNA", "a secret"}), "anna");
    EXPECT_EQ(FakeService::frames(), "wall " + root::le32(2) + "\nANNA\na secret\n" + kAskForUsers);
}

TEST_F(Accounts, wrongPasswordGivesNothing)
{
    const FakeService service({answers::kPasswordWrong});
    EXPECT_EQ(check({"anna", "wrong"}), std::nullopt);
    EXPECT_EQ(FakeService::frames(), "wall " + root::le32(2) + "\nanna\nwrong\n");
}

TEST_F(Accounts, namesThatDifferInCaseAloneAreNobodys)
{
    const FakeService service({answers::kPasswordRight, answers::kUsers});
    EXPECT_EQ(check({"bob", "a secret"}), std::nullopt);
}

TEST_F(Accounts, accountThatTheApplianceDoesNotListIsNobodys)
{
    const FakeService service({answers::kPasswordRight, answers::kUsers});
    EXPECT_EQ(check({"carla", "a secret"}), std::nullopt);
}

TEST_F(Accounts, whatCannotBeAPasswordIsNotSent)
{
    const FakeService service({answers::kPasswordRight});
    for (const Credentials& credentials :
         std::vector<Credentials>{{"", "x"},
                                  {"anna", ""},
                                  {"anna\nbob", "x"},
                                  {"anna", "a\rb"},
                                  {std::string("anna\0bob", 8), "x"},
                                  {std::string(201, 'a'), "x"},
                                  {"anna", std::string(201, 'x')}}) {
        EXPECT_EQ(check(credentials), std::nullopt);
    }
    EXPECT_EQ(FakeService::frames(), "");
}

TEST_F(Accounts, serviceThatDoesNotAnswerIsNoAnswer)
{
    try {
        (void)check({"anna", "x"});
        FAIL();
    } catch (const client::Failure& failure) {
        EXPECT_EQ(failure.code(), client::kUnreachable);
    }
    const FakeService service({"nonsense"});
    EXPECT_THROW((void)check({"anna", "x"}), client::Failure);
}

TEST_F(Accounts, accountIsCreated)
{
    const FakeService service({answers::kCreated, answers::kNameTaken});
    page::createAccount(settings(), {"carla", "a secret"});
    EXPECT_EQ(FakeService::frames(), "crat " + root::le32(2) + "\ncarla\na secret\n");
    try {
        page::createAccount(settings(), {"carla", "a secret"});
        FAIL();
    } catch (const client::Failure& failure) {
        EXPECT_STREQ(failure.what(), "A user of this name exists already, or the name is reserved. "
                                     "(0x10000001)");
    }
}

} // namespace
