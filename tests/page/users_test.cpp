// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <string>

#include "page/deed.h"
#include "page/pages.h"
#include "tests/page/service.h"
#include "tests/page/visits.h"

namespace {

using page::Page;
using root::le32;
using visits::contains;

const std::string kTwoUsers = "lsut " + le32(2) + "\nanna\n<b>ob\n";
const std::string kAskForUsers = "lstu " + le32(0) + "\n";
const std::string kGood = "name=carla+b&password=a+secret+1&repeated=a+secret+1";

const std::string kListStart = "<section class=\"card\" aria-labelledby=\"all\">\n"
                               "<h2 id=\"all\">All users</h2>\n";
const std::string kTable =
    "<table class=\"listing\">\n<caption>2 users</caption>\n<thead><tr>"
    "<th scope=\"col\">Name</th><th scope=\"col\">On these pages</th></tr></thead>\n<tbody>\n"
    "<tr><th scope=\"row\"><bdi>anna</bdi></th><td>may look and change things</td></tr>\n"
    "<tr><th scope=\"row\"><bdi>&lt;b&gt;ob</bdi></th><td>may look</td></tr>\n"
    "</tbody>\n</table>\n";
const std::string kSectionEnd = "</section>\n";

/// What is wrong with a field, as it is shown after the field and at it.
struct Wrong {
    std::string name;
    std::string password;
    std::string repeated;
};

std::string markOf(const std::string& words, const std::string& id)
{
    return words.empty() ? "" : " aria-invalid=\"true\" aria-describedby=\"" + id + "\"";
}

std::string wordsOf(const std::string& words, const std::string& id)
{
    return words.empty() ? ""
                         : "<p class=\"complaint\" id=\"" + id +
                               "\"><span aria-hidden=\"true\">&#10005;</span> " + words + "</p>\n";
}

std::string passwordField(const std::string& name, const std::string& label,
                          const std::string& words)
{
    return "<p class=\"field\"><label for=\"" + name + "\">" + label + "</label>\n<input id=\"" +
           name + "\" name=\"" + name +
           "\" type=\"password\" required maxlength=\"64\" autocomplete=\"new-password\"" +
           markOf(words, "password-complaint") + "></p>\n" + wordsOf(words, "password-complaint");
}

/// The form, with what is shown in the field of the name.
std::string formWith(const std::string& name, const Wrong& wrong = {})
{
    return "<section class=\"card narrow\" aria-labelledby=\"create\">\n"
           "<h2 id=\"create\">Create a user</h2>\n"
           "<p class=\"quiet\">The name has at most 32 bytes. Letters A to Z, digits, blanks, "
           "dots, hyphens and underscores take one each, accented letters two, Chinese characters "
           "three. The password has 8 to 32 characters. With both the user logs in on these "
           "pages and opens shares from other computers.</p>\n"
           "<form method=\"post\" action=\"/cgi-bin/vokpage/users\">\n"
           "<input type=\"hidden\" name=\"token\" value=\"" +
           visits::kToken +
           "\">\n<p class=\"field\"><label for=\"name\">Name</label>\n"
           "<input id=\"name\" name=\"name\" value=\"" +
           name +
           "\" required maxlength=\"64\" autocomplete=\"username\" autocapitalize=\"none\" "
           "spellcheck=\"false\"" +
           markOf(wrong.name, "name-complaint") + "></p>\n" +
           wordsOf(wrong.name, "name-complaint") +
           passwordField("password", "Password", wrong.password) +
           passwordField("repeated", "The password once more", wrong.repeated) +
           "<p class=\"buttons\"><button class=\"main\">Create</button></p>\n</form>\n</section>\n"
           "<p><a href=\"/cgi-bin/vokpage/users/check\">Check the password of a user</a></p>\n";
}

std::string summaryOf(const std::string& items)
{
    return "<div class=\"notice bad\" role=\"alert\"><p>That did not work:</p>\n<ul>" + items +
           "</ul></div>\n";
}

class Users : public root::Test {
  protected:
    void SetUp() override
    {
        root::Test::SetUp();
        visits::clearKept();
        testing::internal::CaptureStderr();
    }

    static Page make(const page::Request& request,
                     const page::Visitor& visitor = visits::administrator())
    {
        config::Configuration settings;
        settings.socket = FakeService::kSocket;
        settings.administrators = {"anna"};
        return visits::makeFor(visitor, page::makeUsers, request, settings);
    }

    void TearDown() override
    {
        (void)testing::internal::GetCapturedStderr();
        root::Test::TearDown();
    }

    /// What was logged since the last call.
    static std::string logged()
    {
        std::string text = testing::internal::GetCapturedStderr();
        testing::internal::CaptureStderr();
        return text;
    }
};

TEST_F(Users, administratorsSeeWhoMayDoWhatAndCanCreate)
{
    const FakeService service({kTwoUsers});
    const Page made = make(visits::get());
    EXPECT_EQ(made.title, "Users");
    EXPECT_EQ(made.status, 200);
    EXPECT_EQ(made.body.text(), kListStart + kTable + kSectionEnd + formWith(""));
    EXPECT_EQ(FakeService::frames(), kAskForUsers);
    EXPECT_EQ(logged(), "");
}

TEST_F(Users, othersSeeTheNames)
{
    page::Visitor visitor = visits::administrator();
    visitor.isAdministrator = false;
    const FakeService service({"lsut " + le32(1) + "\nanna\n"});
    EXPECT_EQ(make(visits::get(), visitor).body.text(),
              kListStart +
                  "<table class=\"listing\">\n<caption>1 user</caption>\n<thead><tr>"
                  "<th scope=\"col\">Name</th></tr></thead>\n<tbody>\n"
                  "<tr><th scope=\"row\"><bdi>anna</bdi></th></tr>\n</tbody>\n</table>\n" +
                  kSectionEnd + "<p>Only an administrator can create users.</p>\n");
}

TEST_F(Users, applianceWithoutUsersSaysSo)
{
    const FakeService service({"lsut " + le32(0) + "\n"});
    EXPECT_EQ(make(visits::get()).body.text(),
              kListStart + "<p>The appliance has no users yet.</p>\n" + kSectionEnd + formWith(""));
}

TEST_F(Users, listThatCannotBeHadIsNoEmptyOne)
{
    const FakeService service({"erro " + le32(0xFF000005)});
    EXPECT_EQ(make(visits::get()).body.text(),
              kListStart +
                  "<div class=\"notice bad\" role=\"alert\"><p>The list of users cannot be read. "
                  "The appliance&#39;s list of users cannot be found.</p></div>\n" +
                  kSectionEnd + formWith(""));
}

TEST_F(Users, userIsCreatedAndToldOnTheNextPage)
{
    const FakeService service({answers::kCreated, kTwoUsers});
    const Page made = make(visits::post(kGood));
    EXPECT_EQ(made.next, "/users");
    EXPECT_EQ(made.body.text(), "");
    EXPECT_EQ(FakeService::frames(), "crat " + le32(2) + "\ncarla b\na secret 1\n");
    EXPECT_EQ(logged(), "vokpage: \"anna\" has created the user \"carla b\"\n");

    ASSERT_EQ(made.cookies.size(), 1U);
    EXPECT_FALSE(contains(made.cookies[0].value, "secret"));
    page::Request next = visits::get();
    next.deed = made.cookies[0].value;
    const Page shown = make(next);
    EXPECT_EQ(shown.body.text(),
              "<div class=\"notice good\" role=\"status\"><p>The user <bdi>carla b</bdi> was "
              "created.</p></div>\n" +
                  kListStart + kTable + kSectionEnd + formWith(""));
    ASSERT_EQ(shown.cookies.size(), 1U);
    EXPECT_EQ(shown.cookies[0].value, "");
}

TEST_F(Users, passwordThatWasRightIsTold)
{
    const FakeService service({kTwoUsers});
    page::Request request = visits::get();
    request.deed = page::cookieOf({"checked", {"bob"}}).value;
    EXPECT_EQ(make(request).body.text(),
              "<div class=\"notice good\" role=\"status\"><p>The password is right: "
              "<bdi>bob</bdi> can log in with it.</p></div>\n" +
                  kListStart + kTable + kSectionEnd + formWith(""));
}

TEST_F(Users, refusalIsSaidBesideItsField)
{
    const FakeService service({answers::kNameTaken, kTwoUsers});
    const std::string words = "A user of this name exists already, or the name is reserved.";
    const Page made = make(visits::post(kGood));
    EXPECT_FALSE(made.next);
    EXPECT_EQ(made.body.text(),
              summaryOf("<li><a href=\"#name\">" + words + "</a></li>") + kListStart + kTable +
                  kSectionEnd +
                  formWith("carla b", {.name = words, .password = {}, .repeated = {}}));
    EXPECT_EQ(made.cookies.size(), 0U);
    EXPECT_EQ(logged(), "");
}

TEST_F(Users, failureOfTheAppliancesIsAboutTheWholeForm)
{
    const FakeService service({le32(0xFF000004), kTwoUsers});
    EXPECT_EQ(make(visits::post(kGood)).body.text(),
              summaryOf("<li>The appliance&#39;s user script did not list the users, so none was "
                        "created; vokctl doctor may say why.</li>") +
                  kListStart + kTable + kSectionEnd + formWith("carla b"));
}

TEST_F(Users, whatCannotBeRightIsNotSent)
{
    const FakeService service({kTwoUsers});
    const std::string noName = "Give the user a name.";
    const std::string badPassword = "A password has 8 to 32 characters: letters A to Z, digits, "
                                    "blanks and signs, but none of &quot; &#39; \\ ` $";
    EXPECT_EQ(make(visits::post("name=+&password=short&repeated=short")).body.text(),
              summaryOf("<li><a href=\"#name\">" + noName + "</a></li><li><a href=\"#password\">" +
                        badPassword + "</a></li>") +
                  kListStart + kTable + kSectionEnd +
                  formWith(" ", {.name = noName, .password = badPassword, .repeated = {}}));
    EXPECT_EQ(FakeService::frames(), kAskForUsers);
}

TEST_F(Users, passwordsThatDifferAreAskedForAgain)
{
    const FakeService service({kTwoUsers});
    const std::string words = "The two passwords differ.";
    EXPECT_EQ(make(visits::post("name=carla&password=a+secret+1&repeated=a+secret+2")).body.text(),
              summaryOf("<li><a href=\"#repeated\">" + words + "</a></li>") + kListStart + kTable +
                  kSectionEnd + formWith("carla", {.name = {}, .password = {}, .repeated = words}));
    EXPECT_EQ(FakeService::frames(), kAskForUsers);
}

TEST_F(Users, serviceThatIsAwayIsSaidToBe)
{
    const std::string words = "The appliance&#39;s service does not answer. Try again in a minute.";
    EXPECT_EQ(make(visits::post(kGood)).body.text(),
              summaryOf("<li>" + words + "</li>") + kListStart +
                  "<div class=\"notice bad\" role=\"alert\"><p>The list of users cannot be read. " +
                  words + "</p></div>\n" + kSectionEnd + formWith("carla b"));
}

} // namespace
