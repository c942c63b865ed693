// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <string>

#include "page/administrators.h"
#include "page/pages.h"
#include "page/sessions.h"
#include "tests/page/service.h"
#include "tests/page/visits.h"

namespace {

using page::Page;
using visits::contains;

class FirstAdministrator : public root::Test {
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
        page::Visitor newcomer = visits::nobody();
        newcomer.mayBegin = true;
        config::Configuration settings;
        settings.socket = FakeService::kSocket;
        return visits::makeFor(newcomer, page::makeFirstAdministrator, request, settings);
    }

    static Page post(const std::string& fields) { return make(visits::post(fields)); }

    std::string expectedLog_;
};

TEST_F(FirstAdministrator, isAskedFor)
{
    const std::string body = make(visits::get()).body.text();
    EXPECT_TRUE(contains(body, "<li aria-current=\"step\">Administrator</li>"));
    EXPECT_TRUE(contains(body, "action=\"/cgi-bin/vokpage/setup/administrator\""));
    EXPECT_TRUE(contains(body, "name=\"repeated\" type=\"password\""));
    EXPECT_TRUE(contains(
        body,
        "<p class=\"quiet\">A name has 1 to 32 characters: letters A to Z, digits, - and _.</p>\n"
        "<p class=\"quiet\">A password has 8 to 32 characters: letters A to Z, digits, blanks and "
        "signs, but none of &quot; &#39; \\ ` $</p>\n<form "));
    EXPECT_FALSE(contains(body, "complaint"));
}

TEST_F(FirstAdministrator, isMadeAndLoggedIn)
{
    const FakeService service({answers::kCreated});
    const Page made = post("name=carla&password=a+secret&repeated=a+secret");
    EXPECT_EQ(FakeService::frames(), "crat " + root::le32(2) + "\ncarla\na secret\n");
    EXPECT_EQ(root::readFile(page::kAdministratorsFile), "carla\n");
    EXPECT_EQ(made.next, "/setup");
    ASSERT_EQ(made.cookies.size(), 2U);
    EXPECT_EQ(page::Sessions().find(made.cookies[0].value, page::now())->account, "carla");
    expectedLog_ = "vokpage: the first administrator is \"carla\", made from \"\"\n";
}

TEST_F(FirstAdministrator, badAnswersMakeNobody)
{
    const FakeService service({answers::kCreated});
    const auto complaintOf = [](const std::string& fields) {
        const std::string body = post(fields).body.text();
        const std::size_t mark = body.find("&#10005;</span> ");
        return body.substr(mark + 16, body.find("</p>", mark) - mark - 16);
    };
    EXPECT_EQ(complaintOf("name=c+a&password=a+secret&repeated=a+secret"),
              "A name has 1 to 32 characters: letters A to Z, digits, - and _.");
    EXPECT_EQ(
        complaintOf("name=carla&password=short&repeated=short"),
        "A password has 8 to 32 characters: letters A to Z, digits, blanks and signs, but none "
        "of &quot; &#39; \\ ` $");
    EXPECT_EQ(complaintOf("name=carla&password=a+secret&repeated=another"),
              "The two passwords differ.");
    EXPECT_EQ(FakeService::frames(), "");
    EXPECT_FALSE(root::exists(page::kAdministratorsFile));
}

TEST_F(FirstAdministrator, accountThatIsThereIsNotTaken)
{
    const FakeService service({answers::kNameTaken});
    const Page made = post("name=anna&password=a+secret&repeated=a+secret");
    const std::string words = "A user of this name exists already, or the name is reserved.";
    EXPECT_TRUE(contains(made.body.text(), "<li><a href=\"#name\">" + words + "</a></li>"));
    EXPECT_TRUE(contains(made.body.text(), "aria-describedby=\"name-complaint\""));
    EXPECT_TRUE(contains(made.body.text(), "&#10005;</span> " + words + "</p>"));
    EXPECT_TRUE(contains(made.body.text(), "value=\"anna\""));
    EXPECT_TRUE(made.cookies.empty());
    EXPECT_FALSE(root::exists(page::kAdministratorsFile));
}

TEST_F(FirstAdministrator, whoComesSecondHasToLogIn)
{
    ASSERT_TRUE(page::Administrators::makeFirst({}, "anna", [] {}));
    const FakeService service({answers::kCreated});
    const Page made = post("name=carla&password=a+secret&repeated=a+secret");
    EXPECT_EQ(made.next, "/login");
    EXPECT_TRUE(made.cookies.empty());
    EXPECT_EQ(FakeService::frames(), "");
    EXPECT_EQ(root::readFile(page::kAdministratorsFile), "anna\n");
}

} // namespace
