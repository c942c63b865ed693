// SPDX-License-Identifier: MIT
#include "page/share_form.h"

#include <gtest/gtest.h>
#include <string>

#include "tests/page/service.h"
#include "tests/page/visits.h"

namespace {

using page::Access;
using page::Candidates;
using page::Complaints;
using page::NewShare;
using root::le32;

std::string formOf(const std::string& fields, const Candidates& candidates,
                   const Complaints& complaints = {})
{
    const config::Configuration settings;
    const page::Request request = visits::post(fields);
    const page::Visitor visitor = visits::administrator();
    page::Script script;
    const page::Visit visit{request, settings, visitor, visits::kToken, script};
    return page::shareForm(visit, candidates, complaints).text();
}

const std::string kStart =
    "<section class=\"card narrow\" aria-labelledby=\"create\">\n"
    "<h2 id=\"create\">Create a share</h2>\n"
    "<p class=\"quiet\">The name has at most 64 bytes. Letters A to Z, digits, blanks, "
    "dots, hyphens and underscores take one each, accented letters two, Chinese characters "
    "three. These pages cannot rename or delete a share later.</p>\n"
    "<form method=\"post\" action=\"/cgi-bin/vokpage/shares\">\n"
    "<input type=\"hidden\" name=\"token\" value=\"" +
    visits::kToken + "\">\n<p class=\"field\"><label for=\"name\">Name</label>\n";
const std::string kLegend = "<fieldset>\n<legend>Who may read and write what is in it</legend>\n";
const std::string kEverybody =
    "<p class=\"choice\"><label for=\"everybody\"><input id=\"everybody\" name=\"access\" "
    "value=\"everybody\" type=\"radio\" required> Everybody in the network</label></p>\n";
const std::string kEnd = "<p class=\"buttons\"><button class=\"main\">Create</button></p>\n"
                         "</form>\n</section>\n";

/// The field of the name as long as nothing is wrong with it.
std::string nameField(const std::string& value)
{
    return "<input id=\"name\" name=\"name\" value=\"" + value +
           "\" required maxlength=\"64\" autocomplete=\"off\" spellcheck=\"false\"></p>\n";
}

TEST(ShareForm, startsWithoutAChoice)
{
    EXPECT_EQ(formOf("", {.users = {"anna", "<b>ob"}, .failure = {}}),
              kStart + nameField("") + kLegend + kEverybody +
                  "<p class=\"choice\"><label for=\"one\"><input id=\"one\" name=\"access\" "
                  "value=\"one\" type=\"radio\" required> One user alone</label></p>\n"
                  "<p class=\"field\"><label for=\"user\">This user</label>\n"
                  "<select id=\"user\" name=\"user\"><option value=\"\">choose one</option>"
                  "<option value=\"anna\">anna</option>"
                  "<option value=\"&lt;b&gt;ob\">&lt;b&gt;ob</option></select></p>\n"
                  "</fieldset>\n" +
                  kEnd);
}

TEST(ShareForm, keepsWhatWasTypedAndSaysWhatIsWrong)
{
    Complaints complaints;
    complaints.add("name", "No <name>.");
    complaints.add("user", "No user.");
    EXPECT_EQ(formOf("name=+A+%26+B+&access=one&user=bob",
                     {.users = {"anna", "bob"}, .failure = {}}, complaints),
              kStart +
                  "<input id=\"name\" name=\"name\" value=\"A &amp; B\" required maxlength=\"64\" "
                  "autocomplete=\"off\" spellcheck=\"false\" aria-invalid=\"true\" "
                  "aria-describedby=\"name-complaint\"></p>\n"
                  "<p class=\"complaint\" id=\"name-complaint\"><span aria-hidden=\"true\">&#10005;"
                  "</span> No &lt;name&gt;.</p>\n" +
                  kLegend + kEverybody +
                  "<p class=\"choice\"><label for=\"one\"><input id=\"one\" name=\"access\" "
                  "value=\"one\" type=\"radio\" required checked> One user alone</label></p>\n"
                  "<p class=\"field\"><label for=\"user\">This user</label>\n"
                  "<select id=\"user\" name=\"user\" aria-invalid=\"true\" "
                  "aria-describedby=\"user-complaint\"><option value=\"\">choose one</option>"
                  "<option value=\"anna\">anna</option><option value=\"bob\" selected>bob</option>"
                  "</select></p>\n"
                  "<p class=\"complaint\" id=\"user-complaint\"><span aria-hidden=\"true\">&#10005;"
                  "</span> No user.</p>\n"
                  "</fieldset>\n" +
                  kEnd);
}

TEST(ShareForm, choiceThatIsMissingIsSaidAtBothButtons)
{
    Complaints complaints;
    complaints.add("everybody", "Choose.");
    const std::string mark = " aria-invalid=\"true\" aria-describedby=\"access-complaint\"";
    EXPECT_EQ(formOf("name=Music", {.users = {"anna"}, .failure = {}}, complaints),
              kStart + nameField("Music") + kLegend +
                  "<p class=\"complaint\" id=\"access-complaint\"><span aria-hidden=\"true\">"
                  "&#10005;</span> Choose.</p>\n"
                  "<p class=\"choice\"><label for=\"everybody\"><input id=\"everybody\" "
                  "name=\"access\" value=\"everybody\" type=\"radio\" required" +
                  mark +
                  "> Everybody in the network</label></p>\n"
                  "<p class=\"choice\"><label for=\"one\"><input id=\"one\" name=\"access\" "
                  "value=\"one\" type=\"radio\" required" +
                  mark +
                  "> One user alone</label></p>\n"
                  "<p class=\"field\"><label for=\"user\">This user</label>\n"
                  "<select id=\"user\" name=\"user\"><option value=\"\">choose one</option>"
                  "<option value=\"anna\">anna</option></select></p>\n"
                  "</fieldset>\n" +
                  kEnd);
}

TEST(ShareForm, withoutUsersThereAreOnlyPublicShares)
{
    const std::string chosen =
        "<p class=\"choice\"><label for=\"everybody\"><input id=\"everybody\" name=\"access\" "
        "value=\"everybody\" type=\"radio\" required checked> Everybody in the network</label>"
        "</p>\n";
    EXPECT_EQ(formOf("access=everybody", {}),
              kStart + nameField("") + kLegend + chosen +
                  "<p class=\"quiet\">A share for one user needs "
                  "<a href=\"/cgi-bin/vokpage/users\">a user</a> first.</p>\n</fieldset>\n" +
                  kEnd);
    EXPECT_EQ(formOf("", {.users = {}, .failure = "Nobody <knows>."}),
              kStart + nameField("") + kLegend + kEverybody +
                  "<p class=\"quiet\">A share for one user cannot be created now. "
                  "Nobody &lt;knows&gt;.</p>\n</fieldset>\n" +
                  kEnd);
}

TEST(NewShares, areReadFromAForm)
{
    const NewShare share = page::readNewShare(page::Form("name=%09+My+music+&access=one&user=+b+"));
    EXPECT_EQ(share.name, "My music");
    EXPECT_EQ(share.access, Access::kOneUser);
    EXPECT_EQ(share.user, " b ") << "that is what this user is called";
    EXPECT_EQ(page::readNewShare(page::Form("access=everybody")).access, Access::kEverybody);
    EXPECT_EQ(page::readNewShare(page::Form("access=all")).access, std::nullopt);
}

TEST(NewShares, lackWhatWasNotChosen)
{
    const auto wrong = [](const NewShare& share) {
        return page::complaintsOf(share).summary().text();
    };
    EXPECT_EQ(wrong({.name = "Music", .access = Access::kEverybody, .user = {}}), "");
    EXPECT_EQ(wrong({.name = "Music", .access = Access::kOneUser, .user = "anna"}), "");
    const std::string start =
        "<div class=\"notice bad\" role=\"alert\"><p>That did not work:</p>\n<ul>";
    EXPECT_EQ(wrong({.name = {}, .access = {}, .user = "anna"}),
              start + "<li><a href=\"#name\">Give the share a name.</a></li>"
                      "<li><a href=\"#everybody\">Choose who may use the share.</a></li>"
                      "</ul></div>\n");
    EXPECT_EQ(wrong({.name = "Music", .access = Access::kOneUser, .user = {}}),
              start + "<li><a href=\"#user\">Choose the user whom the share is for.</a></li>"
                      "</ul></div>\n");
}

class ShareCreation : public root::UntracedTest {};

TEST_F(ShareCreation, sendsOneFrame)
{
    const FakeService service({le32(0), le32(0)});
    const client::Connection connection = {.socket = FakeService::kSocket, .timeout = 20};
    page::createShare(connection, {.name = "Music", .access = Access::kEverybody, .user = "anna"});
    EXPECT_EQ(FakeService::frames(), "pshr " + le32(3) + "\nguest\nMusic\n");
    page::createShare(connection, {.name = "Papers", .access = Access::kOneUser, .user = "anna"});
    EXPECT_EQ(FakeService::frames(),
              "pshr " + le32(3) + "\nguest\nMusic\nshar " + le32(3) + "\nanna\nPapers\n");
}

} // namespace
