// SPDX-License-Identifier: MIT
#include "page/language.h"

#include <gtest/gtest.h>
#include <string>

#include "page/routes.h"
#include "tests/page/visits.h"
#include "text/translation.h"

namespace {

constexpr const char* kVariables = "/etc/pelconfig/system_var";

class Language : public root::Test {
  protected:
    void TearDown() override
    {
        text::speak(*core::findLanguage("en"));
        root::Test::TearDown();
    }

    /// The code of the language for a visitor whose browser sends these headers.
    static std::string ofVisitor(const std::string& cookies, const std::string& accepted = "")
    {
        return page::languageOfVisitor(headers(cookies, accepted)).code;
    }

    static page::Variables headers(const std::string& cookies, const std::string& accepted)
    {
        page::Variables variables;
        variables.set("HTTP_COOKIE", cookies);
        variables.set("HTTP_ACCEPT_LANGUAGE", accepted);
        return variables;
    }
};

TEST_F(Language, isTheBrowsersBeforeTheFirstSetup)
{
    root::writeFile(kVariables, "firsttime=1\nlanguage_current=ge\n");
    EXPECT_EQ(ofVisitor("", "da, fr-CH;q=0.9, en;q=0.8"), "fr");
    EXPECT_EQ(ofVisitor("", "da"), "en");
    EXPECT_EQ(ofVisitor(""), "en");
}

TEST_F(Language, isTheAppliancesAfterTheSetup)
{
    root::writeFile(kVariables, "firsttime=0\nlanguage_current=ge\n");
    EXPECT_EQ(ofVisitor("", "fr"), "ge");
    root::writeFile(kVariables, "firsttime=0\nlanguage_current=xx\n");
    EXPECT_EQ(ofVisitor("", "fr"), "fr") << "the appliance does not say one";
}

TEST_F(Language, isFirstOfAllWhatTheVisitorHasChosen)
{
    root::writeFile(kVariables, "firsttime=0\nlanguage_current=ge\n");
    EXPECT_EQ(ofVisitor("a=b; vokpage_language=zh-Hant", "fr"), "tc");
    EXPECT_EQ(ofVisitor("vokpage_language=en", "fr"), "en");
    EXPECT_EQ(ofVisitor("vokpage_language=xx", "fr"), "ge");
    EXPECT_EQ(ofVisitor("vokpage_language=it; vokpage_language=fr"), "ge")
        << "one of them is somebody else's";
}

TEST_F(Language, isTheBrowsersWhereTheModuleMayNotBeCalled)
{
    root::writeFile(kVariables, "firsttime=0\nlanguage_current=ge\n");
    EXPECT_STREQ(page::languageOfBrowser(headers("", "it")).code, "it");
    EXPECT_STREQ(page::languageOfBrowser(headers("vokpage_language=es", "it")).code, "sp");
    EXPECT_STREQ(page::languageOfBrowser(headers("", "")).code, "en");
}

TEST_F(Language, formHasEachLanguageByItsOwnName)
{
    text::speak(*core::findLanguage("ge"));
    const std::string form = page::languageForm("0123", "/users", "").text();
    const std::size_t list = form.find("<ul");
    EXPECT_EQ(form.substr(0, list), "<form method=\"post\" action=\"/cgi-bin/vokpage/language\">\n"
                                    "<input type=\"hidden\" name=\"token\" value=\"0123\">\n"
                                    "<input type=\"hidden\" name=\"from\" value=\"/users\">\n");
    EXPECT_EQ(form.substr(form.find("<li>")),
              "<li><button name=\"language\" value=\"en\" lang=\"en\">English</button></li>\n"
              "<li><button name=\"language\" value=\"fr\" lang=\"fr\">Français</button></li>\n"
              "<li><button name=\"language\" value=\"de\" lang=\"de\" aria-current=\"true\">Deutsch"
              "</button></li>\n"
              "<li><button name=\"language\" value=\"es\" lang=\"es\">Español</button></li>\n"
              "<li><button name=\"language\" value=\"it\" lang=\"it\">Italiano</button></li>\n"
              "<li><button name=\"language\" value=\"zh-Hans\" lang=\"zh-Hans\">简体中文</button>"
              "</li>\n"
              "<li><button name=\"language\" value=\"zh-Hant\" lang=\"zh-Hant\">繁體中文</button>"
              "</li>\n</ul>\n</form>\n");
}

TEST_F(Language, formKnowsTheQueryOfItsPage)
{
    EXPECT_TRUE(visits::contains(page::languageForm("", "/share", "name=a&b=\"").text(),
                                 "name=\"from\" value=\"/share?name=a&amp;b=&quot;\">"));
}

TEST_F(Language, choiceLeadsBackToTheSameQuery)
{
    const auto placeAfter = [](const std::string& from) {
        const page::Page made = visits::makeFor(visits::nobody(), page::makeLanguage,
                                                visits::post("language=fr&from=" + from));
        return std::string(*made.next) + made.nextQuery;
    };
    EXPECT_EQ(placeAfter("/share%3fname=A%2525%2Bb%26days=30"), "/share?name=A%25+b&days=30");
    EXPECT_EQ(placeAfter("%3fsort=name"), "?sort=name");
    EXPECT_EQ(placeAfter("/share%3f"), "/share?");
    EXPECT_EQ(placeAfter("/share%3fname=a%0d%0aSet-Cookie:"), "/share") << "a line of its own";
}

TEST_F(Language, choiceIsKeptAndLeadsBack)
{
    const page::Page made = visits::makeFor(visits::nobody(), page::makeLanguage,
                                            visits::post("language=zh-Hans&from=/users"));
    EXPECT_EQ(made.next, "/users");
    ASSERT_EQ(made.cookies.size(), 1U);
    EXPECT_EQ(made.cookies[0].name, "vokpage_language");
    EXPECT_EQ(made.cookies[0].value, "zh-Hans");
    EXPECT_EQ(made.cookies[0].kept, std::chrono::hours(365 * 24));
}

TEST_F(Language, choiceLeadsToNoOtherSite)
{
    for (const char* from : {"", "/nowhere", "https://example.com/", "//example.com", "/logout"}) {
        const page::Page made =
            visits::makeFor(visits::nobody(), page::makeLanguage,
                            visits::post("language=fr&from=" + std::string(from)));
        EXPECT_EQ(made.next, "") << from;
        EXPECT_EQ(made.nextQuery, "") << from;
    }
}

TEST_F(Language, otherLanguagesAreRefused)
{
    for (const char* fields : {"", "language=xx", "from=/users"}) {
        try {
            (void)visits::makeFor(visits::nobody(), page::makeLanguage, visits::post(fields));
            ADD_FAILURE() << fields;
        } catch (const page::Refusal& refusal) {
            EXPECT_EQ(refusal.status(), page::kBadRequest);
            EXPECT_STREQ(refusal.what(), "Choose one of the languages.");
        }
    }
}

TEST_F(Language, answersAreInIt)
{
    root::writeFile(kVariables, "firsttime=0\nlanguage_current=fr\n");
    page::Variables variables = headers("vokpage_language=de", "");
    variables.set("REQUEST_METHOD", "PUT");
    const std::string answer = page::answer(variables, 0);
    EXPECT_TRUE(visits::contains(answer, "\r\nContent-Language: de\r\n"));
    EXPECT_TRUE(visits::contains(answer, "<html lang=\"de\">\n"));
}

} // namespace
