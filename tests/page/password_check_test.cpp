// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <string>

#include "page/deed.h"
#include "page/login_pauses.h"
#include "page/pages.h"
#include "tests/page/service.h"
#include "tests/page/visits.h"

namespace {

using page::Page;
using root::le32;

const std::string kFields = "name=anna&password=a+secret";
const std::string kAsked = "wall " + le32(2) + "\nanna\na secret\n";

/// The page, with what is wrong with the password.
std::string bodyWith(const std::string& name, const std::string& words)
{
    const std::string summary =
        "<div class=\"notice bad\" role=\"alert\"><p>That did not work:</p>\n<ul>"
        "<li><a href=\"#password\">" +
        words + "</a></li></ul></div>\n";
    const std::string mark =
        words.empty() ? "" : " aria-invalid=\"true\" aria-describedby=\"password-complaint\"";
    const std::string complaint = "<p class=\"complaint\" id=\"password-complaint\">"
                                  "<span aria-hidden=\"true\">&#10005;</span> " +
                                  words + "</p>\n";
    return (words.empty() ? "" : summary) +
           "<section class=\"card narrow\">\n<p class=\"quiet\">Says whether a user can log in "
           "with a password. Nothing is changed.</p>\n"
           "<form method=\"post\" action=\"/cgi-bin/vokpage/users/check\">\n"
           "<input type=\"hidden\" name=\"token\" value=\"" +
           visits::kToken +
           "\">\n<p class=\"field\"><label for=\"name\">Name</label>\n"
           "<input id=\"name\" name=\"name\" value=\"" +
           name +
           "\" required maxlength=\"64\" autocomplete=\"username\" autocapitalize=\"none\" "
           "spellcheck=\"false\"></p>\n"
           "<p class=\"field\"><label for=\"password\">Password</label>\n"
           "<input id=\"password\" name=\"password\" type=\"password\" required maxlength=\"64\" "
           "autocomplete=\"off\"" +
           mark + "></p>\n" + (words.empty() ? "" : complaint) +
           "<p class=\"buttons\"><button class=\"main\">Check</button></p>\n</form>\n"
           "<p><a href=\"/cgi-bin/vokpage/users\">Back to the users</a></p>\n</section>\n";
}

class PasswordCheck : public root::Test {
  protected:
    void SetUp() override
    {
        root::Test::SetUp();
        visits::clearKept();
        testing::internal::CaptureStderr();
    }

    void TearDown() override
    {
        EXPECT_EQ(testing::internal::GetCapturedStderr(), expectedLog_);
        root::Test::TearDown();
    }

    static Page make(const page::Request& request)
    {
        config::Configuration settings;
        settings.socket = FakeService::kSocket;
        return visits::makeFor(visits::administrator(), page::makePasswordCheck, request, settings);
    }

    std::string expectedLog_;
};

TEST_F(PasswordCheck, asksForNameAndPassword)
{
    const Page made = make(visits::get());
    EXPECT_EQ(made.title, "Check a password");
    EXPECT_EQ(made.body.text(), bodyWith("", ""));
}

TEST_F(PasswordCheck, rightPasswordIsToldOnThePageOfTheUsers)
{
    const FakeService service({answers::kPasswordRight, answers::kUsers});
    const Page made = make(visits::post(kFields));
    EXPECT_EQ(made.next, "/users");
    EXPECT_EQ(made.body.text(), "");
    ASSERT_EQ(made.cookies.size(), 1U);
    EXPECT_EQ(made.cookies[0].value, page::cookieOf({"checked", {"anna"}}).value);
    EXPECT_EQ(FakeService::frames(), kAsked + "lstu " + le32(0) + "\n");
    EXPECT_EQ(page::LoginPauses().attempt("anna", page::now()), page::Time(0));
    expectedLog_ = "vokpage: \"anna\" checks the password of \"anna\"\n";
}

TEST_F(PasswordCheck, wrongPasswordIsSaidToBeAndIsNoneToGuess)
{
    const FakeService service({answers::kPasswordWrong});
    EXPECT_EQ(make(visits::post(kFields)).body.text(),
              bodyWith("anna", "With this name and this password nobody can log in."));
    EXPECT_EQ(FakeService::frames(), kAsked);
    EXPECT_GT(page::LoginPauses().attempt("anna", page::now()), page::Time(0));
    expectedLog_ = "vokpage: \"anna\" checks the password of \"anna\"\n";
}

TEST_F(PasswordCheck, pauseOfTheLoginHoldsHereToo)
{
    // Seven wrong passwords, each as soon as it could be: the next may come in nearly a minute, so
    // that a slow machine does not reach the end of the pause.
    page::LoginPauses pauses;
    page::Time at = page::now() - page::Time(70);
    for (page::Time wait{0}; wait < page::LoginPauses::kLongestOfAccount; at += wait) {
        ASSERT_EQ(pauses.attempt("anna", at), page::Time(0));
        wait = pauses.attempt("anna", at);
    }
    const FakeService service({answers::kPasswordRight});
    const std::string body = make(visits::post(kFields)).body.text();
    EXPECT_TRUE(visits::contains(body, "There were wrong passwords. Wait "));
    EXPECT_EQ(FakeService::frames(), "");
}

TEST_F(PasswordCheck, whatIsMissingIsNotTried)
{
    const std::string body = make(visits::post("name=+&password=")).body.text();
    EXPECT_TRUE(
        body.starts_with("<div class=\"notice bad\" role=\"alert\"><p>That did not work:</p>\n<ul>"
                         "<li><a href=\"#name\">Give the name of the user.</a></li>"
                         "<li><a href=\"#password\">Give the password.</a></li></ul></div>\n"))
        << body;
    EXPECT_EQ(page::LoginPauses().attempt("", page::now()), page::Time(0));
}

TEST_F(PasswordCheck, serviceThatIsAwayIsSaidToBe)
{
    const Page made = make(visits::post(kFields));
    EXPECT_EQ(made.body.text(),
              "<div class=\"notice bad\" role=\"alert\"><p>That did not work:</p>\n<ul><li>The "
              "appliance&#39;s service does not answer. Try again in a minute.</li></ul></div>\n" +
                  bodyWith("anna", ""));
    expectedLog_ = "vokpage: \"anna\" checks the password of \"anna\"\n"
                   "vokpage: cannot reach the service at /tmp/service: No such file or directory. "
                   "Is vokserve running?\n";
}

} // namespace
