// SPDX-License-Identifier: MIT
#include "page/new_account.h"

#include <gtest/gtest.h>
#include <string>

#include "page/account_fields.h"

namespace {

using page::Complaints;
using page::Form;

std::string wrongWith(const std::string& fields, std::string_view aboutName = "")
{
    return page::complaintsOfAccount(Form(fields), aboutName).summary().text();
}

const std::string kStart =
    "<div class=\"notice bad\" role=\"alert\"><p>That did not work:</p>\n<ul>";
const std::string kEnd = "</ul></div>\n";

TEST(NewAccount, nothingIsWrongWithGoodAnswers)
{
    EXPECT_EQ(wrongWith("name=anna&password=a+secret&repeated=a+secret"), "");
}

TEST(NewAccount, eachFieldHasItsOwnComplaint)
{
    EXPECT_EQ(wrongWith("password=a+secret&repeated=A+secret", "No name."),
              kStart +
                  "<li><a href=\"#name\">No name.</a></li>"
                  "<li><a href=\"#repeated\">The two passwords differ.</a></li>" +
                  kEnd);
    EXPECT_EQ(wrongWith("password=short&repeated=other"),
              kStart +
                  "<li><a href=\"#password\">A password has 8 to 32 characters: letters A to "
                  "Z, digits, blanks and signs, but none of &quot; &#39; \\ ` $</a></li>" +
                  kEnd);
}

TEST(NewAccount, fieldsKeepTheNameAndNoPassword)
{
    Complaints complaints;
    complaints.add("name", "1");
    complaints.add("password", "2");
    EXPECT_EQ(
        page::accountFields(Form("name=anna&password=x&repeated=y"), complaints).text(),
        page::nameField("anna", "1").text() +
            page::passwordField("password", "Password", "new-password", "2").text() +
            page::passwordField("repeated", "The password once more", "new-password", "").text());
}

} // namespace
