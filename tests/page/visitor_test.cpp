// SPDX-License-Identifier: MIT
#include "page/visitor.h"

#include <gtest/gtest.h>
#include <string>

#include "page/administrators.h"
#include "page/sessions.h"
#include "tests/page/visits.h"

namespace {

using config::Configuration;
using page::Level;
using page::Request;
using page::Visitor;

class Visitors : public root::Test {
  protected:
    void SetUp() override
    {
        root::Test::SetUp();
        visits::clearKept();
        root::writeFile(root::kVariables, "firsttime=1\n");
        settings.administrators = {"anna"};
    }

    [[nodiscard]] Visitor identify(const Request& request) const
    {
        page::Script script;
        return page::identify(request, settings, script);
    }

    static Request showing(const std::string& account)
    {
        Request request;
        request.token = visits::kToken;
        request.session = page::Sessions().begin(account, page::now());
        return request;
    }

    static Request stranger()
    {
        Request request;
        request.token = visits::kToken;
        request.session = "0123456789abcdef0123456789abcdef";
        return request;
    }

    Configuration settings;
};

TEST_F(Visitors, sessionSaysWhoAsks)
{
    const Request request = showing("anna");
    const Visitor visitor = identify(request);
    EXPECT_EQ(visitor.account, "anna");
    EXPECT_TRUE(visitor.isAdministrator);
    EXPECT_TRUE(visitor.hasSession);
    EXPECT_FALSE(visitor.mayBegin);
    EXPECT_EQ(visitor.formToken, page::Sessions().find(request.session, page::now())->formToken);
}

TEST_F(Visitors, otherAccountsAreNoAdministrators)
{
    const Visitor visitor = identify(showing("bob"));
    EXPECT_EQ(visitor.account, "bob");
    EXPECT_FALSE(visitor.isAdministrator);
}

TEST_F(Visitors, withoutASessionNobodyAsks)
{
    const Visitor visitor = identify(stranger());
    EXPECT_EQ(visitor.account, "");
    EXPECT_FALSE(visitor.isAdministrator);
    EXPECT_FALSE(visitor.mayBegin);
    EXPECT_EQ(visitor.formToken, visits::kToken);
}

TEST_F(Visitors, newApplianceWithoutAdministratorsMayBeBegun)
{
    settings.administrators = {};
    EXPECT_TRUE(identify(stranger()).mayBegin);
    EXPECT_FALSE(identify(showing("bob")).mayBegin);
    root::writeFile(root::kVariables, "");
    EXPECT_TRUE(identify(stranger()).mayBegin) << "the mark may be missing, too";
    root::writeFile(root::kVariables, "firsttime=0\n");
    EXPECT_FALSE(identify(stranger()).mayBegin);
}

TEST_F(Visitors, firstAdministratorEndsThat)
{
    settings.administrators = {};
    ASSERT_TRUE(page::Administrators::makeFirst(settings, "carla", [] {}));
    EXPECT_FALSE(identify(stranger()).mayBegin);
    EXPECT_TRUE(identify(showing("carla")).isAdministrator);
}

TEST_F(Visitors, webServerIsBelievedIfTheSettingsSaySo)
{
    Request request = showing("bob");
    request.remoteUser = "anna";
    EXPECT_EQ(identify(request).account, "bob") << "otherwise it is not";
    settings.trustWebServer = true;
    const Visitor visitor = identify(request);
    EXPECT_EQ(visitor.account, "anna");
    EXPECT_TRUE(visitor.isAdministrator);
    EXPECT_FALSE(visitor.hasSession);
    EXPECT_EQ(visitor.formToken, visits::kToken);
    request.remoteUser = "carla";
    EXPECT_FALSE(identify(request).isAdministrator);
}

TEST_F(Visitors, webServerThatIsBelievedHasToSaySomebody)
{
    settings.trustWebServer = true;
    settings.administrators = {};
    try {
        (void)identify(showing("anna"));
        FAIL() << "neither a session nor a new appliance is a way in";
    } catch (const page::Refusal& refusal) {
        EXPECT_EQ(refusal.status(), 403);
        EXPECT_STREQ(
            refusal.what(),
            "The web server has not said who you are. This appliance is set to rely on the "
            "web server's login, which has to be switched on.");
    }
}

TEST(Levels, eachAdmitsItsVisitors)
{
    Visitor account;
    account.account = "bob";
    Visitor newcomer;
    newcomer.mayBegin = true;
    const auto admitted = [&](Level level) {
        std::string visitors;
        visitors += page::admits(level, visits::administrator()) ? "administrator " : "";
        visitors += page::admits(level, account) ? "account " : "";
        visitors += page::admits(level, newcomer) ? "newcomer " : "";
        visitors += page::admits(level, visits::nobody()) ? "nobody " : "";
        return visitors;
    };
    EXPECT_EQ(admitted(Level::kAdministrator), "administrator ");
    EXPECT_EQ(admitted(Level::kAccount), "administrator account ");
    EXPECT_EQ(admitted(Level::kNewcomer), "newcomer ");
    EXPECT_EQ(admitted(Level::kAnybody), "administrator account newcomer nobody ");
}

TEST(FormTokens, formNeedsTheVisitorsToken)
{
    const Visitor visitor = visits::administrator();
    EXPECT_NO_THROW(page::checkToken(visits::post("token=" + visits::kToken), visitor));
    EXPECT_NO_THROW(page::checkToken(visits::get(), visitor)) << "reading needs none";
    for (const std::string& fields :
         {std::string("a=1"), std::string("token="), "token=" + visits::kToken.substr(1) + "0"}) {
        EXPECT_THROW(page::checkToken(visits::post(fields), visitor), page::Refusal) << fields;
    }
    EXPECT_THROW(page::checkToken(visits::post("token="), {}), page::Refusal)
        << "nothing is not the same token";
}

} // namespace
