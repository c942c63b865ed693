// SPDX-License-Identifier: MIT
#include "page/account_fields.h"

#include <gtest/gtest.h>
#include <string>

#include "page/sessions.h"
#include "tests/support/root.h"

namespace {

TEST(AccountFields, credentialsAreReadFromAForm)
{
    const page::Credentials credentials =
        page::readCredentials(page::Form("name=+anna+&password=+a+secret+"));
    EXPECT_EQ(credentials.name, "anna");
    EXPECT_EQ(credentials.password, " a secret ");
}

TEST(AccountFields, nameIsShownAgainAndEscaped)
{
    EXPECT_EQ(page::nameField("\"><b>", "").text(),
              "<p class=\"field\"><label for=\"name\">Name</label>\n"
              "<input id=\"name\" name=\"name\" value=\"&quot;&gt;&lt;b&gt;\" required "
              "maxlength=\"64\" autocomplete=\"username\" autocapitalize=\"none\" "
              "spellcheck=\"false\"></p>\n");
}

TEST(AccountFields, complaintStandsBelowItsField)
{
    EXPECT_EQ(
        page::passwordField("password", "Password", "new-password", "Too short.").text(),
        "<p class=\"field\"><label for=\"password\">Password</label>\n"
        "<input id=\"password\" name=\"password\" type=\"password\" required maxlength=\"64\" "
        "autocomplete=\"new-password\" aria-invalid=\"true\" "
        "aria-describedby=\"password-complaint\"></p>\n"
        "<p class=\"complaint\" id=\"password-complaint\"><span "
        "aria-hidden=\"true\">&#10005;</span> Too short.</p>\n");
}

TEST(AccountFields, goodNewNames)
{
    for (const std::string& name :
         {std::string("a"), std::string("Anna-2_x"), std::string(32, 'x')}) {
        EXPECT_EQ(page::complainOfNewName(name), "") << name;
    }
    for (const std::string& name :
         {std::string(), std::string(33, 'x'), std::string("-anna"), std::string("an na"),
          std::string("an:na"), std::string("\xC3\xA9lise"), std::string("$(x)")}) {
        EXPECT_EQ(page::complainOfNewName(name),
                  "A name has 1 to 32 characters: letters A to Z, digits, - and _.")
            << name;
    }
}

TEST(AccountFields, goodNewPasswords)
{
    for (const std::string& password :
         {std::string("12345678"), std::string("\xC3\xA9lise, & <friends>"),
          std::string(32, 'x')}) {
        EXPECT_EQ(page::complainOfNewPassword(password), "") << password;
    }
    for (const std::string& password :
         {std::string(), std::string("1234567"), std::string(33, 'x'), std::string("a'12345678"),
          std::string("a\"12345678"), std::string("a`12345678"), std::string("a\\12345678"),
          std::string("a$12345678"), std::string("a\n12345678")}) {
        EXPECT_EQ(
            page::complainOfNewPassword(password),
            "A password has 8 to 32 characters: letters A to Z, digits, blanks and signs, but "
            "none of \" ' \\ ` $")
            << password;
    }
}

class NewSession : public root::Test {};

TEST_F(NewSession, browserKeepsItAndForgetsItsFormerToken)
{
    const std::vector<page::Cookie> cookies = page::beginSession("anna");
    ASSERT_EQ(cookies.size(), 2U);
    EXPECT_EQ(cookies[0].name, "vokpage_session");
    EXPECT_EQ(page::Sessions().find(cookies[0].value, page::now())->account, "anna");
    EXPECT_EQ(cookies[1].name, "vokpage_token");
    EXPECT_EQ(cookies[1].value, "");
}

} // namespace
