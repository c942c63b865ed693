// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <string>

#include "page/pages.h"
#include "page/sessions.h"
#include "tests/page/service.h"
#include "tests/page/visits.h"

namespace {

using page::Page;
using visits::contains;

class Login : public root::Test {
  protected:
    void SetUp() override
    {
        root::Test::SetUp();
        visits::clearKept();
        testing::internal::CaptureStderr();
    }

    static Page post(const std::string& fields, const page::Visitor& visitor = visits::nobody())
    {
        page::Request request = visits::post(fields);
        request.address = "192.0.2.7";
        config::Configuration settings;
        settings.socket = FakeService::kSocket;
        return visits::makeFor(visitor, page::makeLogin, request, settings);
    }

    static std::string logged() { return testing::internal::GetCapturedStderr(); }
};

TEST_F(Login, asksForNameAndPassword)
{
    const Page made = visits::makeFor(visits::nobody(), page::makeLogin, visits::get());
    EXPECT_EQ(made.title, "Log in");
    EXPECT_EQ(made.status, 200);
    EXPECT_TRUE(contains(made.body.text(), R"(<input id="name" name="name" value="")"));
    EXPECT_TRUE(contains(made.body.text(), R"(name="password" type="password")"));
    EXPECT_TRUE(contains(made.body.text(), R"(name="token" value=")" + visits::kToken + R"(")"));
    EXPECT_EQ(logged(), "");
}

TEST_F(Login, rightPasswordBeginsASession)
{
    const FakeService service({answers::kPasswordRight, answers::kUsers});
    const Page made = post("name=Anna&password=a+secret");
    EXPECT_EQ(made.next, "");
    ASSERT_EQ(made.cookies.size(), 2U);
    EXPECT_EQ(made.cookies[0].name, "vokpage_session");
    EXPECT_EQ(page::Sessions().find(made.cookies[0].value, page::now())->account, "anna");
    EXPECT_EQ(logged(), "vokpage: logged in: \"Anna\" from \"192.0.2.7\"\n");
}

TEST_F(Login, wrongPasswordIsRefusedAndLogged)
{
    const FakeService service({answers::kPasswordWrong});
    const Page made = post("name=a%0Ab&password=secret");
    EXPECT_EQ(made.status, 403);
    EXPECT_EQ(made.next, std::nullopt);
    EXPECT_TRUE(made.cookies.empty());
    EXPECT_TRUE(contains(made.body.text(), "<p>The name or the password is wrong.</p>"));
    EXPECT_FALSE(contains(made.body.text(), "secret"));
    EXPECT_EQ(logged(), "vokpage: wrong name or password: \"a\\u{a}b\" from \"192.0.2.7\"\n");
}

TEST_F(Login, nextAttemptAtTheAccountHasToWait)
{
    const FakeService service({answers::kPasswordWrong});
    (void)post("name=anna&password=wrong");
    const std::string sent = FakeService::frames();
    const Page made = post("name=anna&password=right");
    EXPECT_EQ(made.status, 429);
    EXPECT_EQ(made.retryAfter, page::Time(1));
    EXPECT_TRUE(
        contains(made.body.text(), "<p>There were wrong passwords. Wait 1 s, then try again.</p>"));
    EXPECT_EQ(FakeService::frames(), sent) << "the password is not even looked at";
    EXPECT_EQ(logged(), "vokpage: wrong name or password: \"anna\" from \"192.0.2.7\"\n"
                        "vokpage: a login had to wait: \"anna\" from \"192.0.2.7\"\n");
}

TEST_F(Login, withoutTheServiceNobodyGetsIn)
{
    const Page made = post("name=anna&password=right");
    EXPECT_EQ(made.status, 503);
    EXPECT_TRUE(made.cookies.empty());
    EXPECT_TRUE(
        contains(made.body.text(), "<p>The appliance cannot check passwords now. Try again.</p>"));
    EXPECT_TRUE(contains(logged(), "vokpage: no password can be checked: cannot reach the service "
                                   "at /tmp/service"));
}

TEST_F(Login, whoHasLoggedInGoesOn)
{
    EXPECT_EQ(visits::makeFor(visits::administrator(), page::makeLogin, visits::get()).next, "");
    EXPECT_EQ(logged(), "");
}

TEST_F(Login, newApplianceHasNobodyToLogIn)
{
    page::Visitor newcomer = visits::nobody();
    newcomer.mayBegin = true;
    EXPECT_EQ(visits::makeFor(newcomer, page::makeLogin, visits::get()).next,
              "/setup/administrator");
    EXPECT_EQ(logged(), "");
}

TEST_F(Login, loggingOutEndsTheSession)
{
    page::Request request = visits::post("");
    request.session = page::Sessions().begin("anna", page::now());
    const Page made = visits::makeFor(visits::administrator(), page::makeLogout, request);
    EXPECT_EQ(made.next, "/login");
    ASSERT_EQ(made.cookies.size(), 1U);
    EXPECT_EQ(made.cookies[0].name, "vokpage_session");
    EXPECT_EQ(made.cookies[0].value, "");
    EXPECT_FALSE(page::Sessions().find(request.session, page::now()));
    EXPECT_EQ(logged(), "vokpage: logged out: \"anna\" from \"\"\n");
}

} // namespace
