// SPDX-License-Identifier: MIT
#include "page/layout.h"

#include <array>
#include <gtest/gtest.h>
#include <string>

#include "page/language.h"
#include "tests/page/visits.h"
#include "text/translation.h"

namespace {

using page::Html;
using page::Level;
using page::Mood;
using page::Page;
using page::Script;
using visits::contains;

const std::string kHostile = "\"><script>alert(1)</script>";

page::Page makeNothing(page::Visit& /*visit*/)
{
    return {};
}

constexpr auto kPages = std::to_array<page::PageEntry>({
    {"", "Overview", makeNothing, Level::kAccount, std::nullopt, true},
    {"/setup", "Set <b>up</b>", makeNothing, Level::kAdministrator, Level::kAdministrator, true},
    {"/sync", "Sync", makeNothing, Level::kAccount, Level::kAdministrator, true},
    {"/login", "Log in", makeNothing, Level::kAnybody, Level::kAnybody, false},
});

Page somePage()
{
    Page made;
    made.title = "A <title>";
    made.body << "<p>body</p>\n";
    return made;
}

std::string laidOut(const page::Frame& frame, const Script& script = Script())
{
    return page::layOut(frame, somePage(), script).text();
}

TEST(Layout, isAWholePage)
{
    const std::string page = laidOut({kPages, "", "abc", "box"});
    EXPECT_TRUE(page.starts_with("<!DOCTYPE html>\n<html lang=\"en\">\n"));
    EXPECT_TRUE(
        page.ends_with("<p>body</p>\n</main>\n<footer><div class=\"wide\">\n<p class=\"about\">"
                       "<a href=\"/cgi-bin/vokpage/help\">Troubleshooting</a></p>\n"
                       "</div></footer>\n</body>\n</html>\n"));
    EXPECT_TRUE(contains(page, "<title>A &lt;title&gt; &middot; box</title>"));
    EXPECT_TRUE(contains(page, "<h1>A &lt;title&gt;</h1>"));
    EXPECT_TRUE(
        contains(page, R"(<meta name="viewport" content="width=device-width, initial-scale=1">)"));
}

TEST(Layout, pageMayAddToTheHead)
{
    Page made = somePage();
    made.head << "<meta name=\"x\">\n";
    EXPECT_TRUE(contains(page::layOut({kPages, "", "abc", "box"}, made, Script()).text(),
                         "<link rel=\"stylesheet\" href=\"/style.css\">\n<meta name=\"x\">\n"
                         "<script src=\"/page.js\" defer></script>\n</head>\n"));
}

TEST(Layout, marksThePageInTheNavigation)
{
    const std::string page = laidOut({kPages, "/setup", "abc", "box", visits::administrator()});
    EXPECT_TRUE(contains(
        page,
        R"(<ul><li><a href="/cgi-bin/vokpage">Overview</a></li>)"
        R"(<li><a href="/cgi-bin/vokpage/setup" aria-current="page">Set &lt;b&gt;up&lt;/b&gt;</a></li>)"
        R"(<li><a href="/cgi-bin/vokpage/sync">Sync</a></li></ul>)"));
}

TEST(Layout, navigationHasWhatTheVisitorMayRead)
{
    page::Visitor visitor = visits::administrator();
    visitor.isAdministrator = false;
    EXPECT_TRUE(
        contains(laidOut({kPages, "", "abc", "box", visitor}),
                 R"(<ul><li><a href="/cgi-bin/vokpage" aria-current="page">Overview</a></li>)"
                 R"(<li><a href="/cgi-bin/vokpage/sync">Sync</a></li></ul>)"));
    EXPECT_FALSE(contains(laidOut({kPages, "", "abc", "box", visits::nobody()}), "<nav"));
}

TEST(Layout, whoHasLoggedInIsNamedAndMayLogOut)
{
    page::Visitor visitor = visits::administrator();
    visitor.account = kHostile;
    EXPECT_TRUE(
        contains(laidOut({kPages, "", "abc", "box", visitor, visits::kToken}),
                 "<form method=\"post\" action=\"/cgi-bin/vokpage/logout\">\n"
                 "<input type=\"hidden\" name=\"token\" value=\"" +
                     visits::kToken +
                     "\">\n<p class=\"who\"><bdi>&quot;&gt;&lt;script&gt;alert(1)&lt;/script&gt;"
                     "</bdi> <button>Log out</button></p>\n</form>\n"));
    EXPECT_FALSE(contains(laidOut({kPages, "", "abc", "box"}), "logout"));
    visitor.hasSession = false;
    const std::string ofServer = laidOut({kPages, "", "abc", "box", visitor, visits::kToken});
    EXPECT_FALSE(contains(ofServer, "logout"))
        << "the web server has to log out whom it has let in";
    EXPECT_TRUE(contains(ofServer, "<p class=\"who\"><bdi>&quot;"));
}

TEST(Layout, footOffersTheLanguages)
{
    const std::string page =
        laidOut({kPages, "/sync", "abc", "box", visits::nobody(), visits::kToken});
    EXPECT_TRUE(contains(page, "<footer><div class=\"wide\">\n" +
                                   page::languageForm(visits::kToken, "/sync", "").text() +
                                   "<p class=\"about\">"));
    EXPECT_FALSE(contains(page, "<span>vokcontrol")) << "no stranger is told the version";
}

TEST(Layout, whoHasLoggedInIsToldTheVersion)
{
    EXPECT_TRUE(contains(laidOut({kPages, "", "abc", "box", visits::administrator()}),
                         "Troubleshooting</a> <span>vokcontrol " VOKPAGE_VERSION
                         "</span></p>\n</div></footer>\n"));
}

TEST(Layout, speaksTheLanguageThatWasChosen)
{
    text::speak(*core::findLanguage("ge"));
    const std::string page = laidOut({kPages, "", "abc", "box"});
    text::speak(*core::findLanguage("en"));
    EXPECT_TRUE(page.starts_with("<!DOCTYPE html>\n<html lang=\"de\">\n"));
}

TEST(Layout, escapesTheNameOfTheAppliance)
{
    const std::string page = laidOut({kPages, "", "abc", kHostile});
    EXPECT_FALSE(contains(page, "<script>alert"));
    EXPECT_TRUE(contains(page, "<bdi>&quot;&gt;&lt;script&gt;alert(1)&lt;/script&gt;</bdi>"));
}

TEST(Layout, applianceWithoutANameIsOneAllTheSame)
{
    const std::string page = laidOut({kPages, "", "abc", ""});
    EXPECT_TRUE(contains(page, "<title>A &lt;title&gt;</title>"));
    EXPECT_TRUE(contains(page, "<bdi>Storage appliance</bdi>"));
}

TEST(Layout, carriesScriptWithItsNonceBeforeTheFileThatUsesIt)
{
    Script script;
    script.add("function tov_hdds()\n{\n\treturn 2;\n}\n");
    EXPECT_TRUE(
        contains(laidOut({kPages, "", "abc", ""}, script),
                 "<script nonce=\"abc\">\nfunction tov_hdds()\n{\n\treturn 2;\n}\n</script>\n"
                 "<script src=\"/page.js\" defer></script>"));
    EXPECT_FALSE(contains(laidOut({kPages, "", "abc", ""}), "nonce")) << "nothing was printed";
}

TEST(Parts, formsCarryTheToken)
{
    EXPECT_EQ(page::openForm(visits::kToken, "/sync").text(),
              "<form method=\"post\" action=\"/cgi-bin/vokpage/sync\">\n"
              "<input type=\"hidden\" name=\"token\" value=\"" +
                  visits::kToken + "\">\n");
}

TEST(Parts, factsAreEscapedOrNotKnown)
{
    EXPECT_EQ(page::fact("Label", "<b>").text(),
              "<div><dt>Label</dt><dd><bdi>&lt;b&gt;</bdi></dd></div>\n");
    EXPECT_EQ(page::fact("Label", "").text(),
              "<div><dt>Label</dt><dd><span class=\"quiet\">not known</span></dd></div>\n");
}

TEST(Parts, firstStepOfTheSetupComesOnce)
{
    const std::string others = "\n<li data-step=\"0\">Name and language</li>\n"
                               "<li data-step=\"1\">Public share</li>\n"
                               "<li data-step=\"2\">Check</li>\n</ol>\n";
    EXPECT_EQ(page::setupSteps(false).text(), "<ol class=\"steps\">" + others);
    EXPECT_EQ(page::setupSteps(true).text(),
              "<ol class=\"steps\">\n<li aria-current=\"step\">Administrator</li>" + others);
}

TEST(Parts, complaintsBelongToTheirFields)
{
    EXPECT_EQ(page::complaint("id", "<bad>").text(),
              "<p class=\"complaint\" id=\"id\"><span aria-hidden=\"true\">&#10005;</span> "
              "&lt;bad&gt;</p>\n");
    EXPECT_EQ(page::invalidMark("id", "bad").text(),
              " aria-invalid=\"true\" aria-describedby=\"id\"");
    EXPECT_EQ(page::complaint("id", "").text() + page::invalidMark("id", "").text(), "");
}

TEST(Parts, ruleOfNamesCountsBytes)
{
    EXPECT_EQ(page::nameRule(7),
              "The name has at most 7 bytes. Letters A to Z, digits, blanks, dots, hyphens and "
              "underscores take one each, accented letters two, Chinese characters three.");
}

TEST(Parts, noticesTellTheirMood)
{
    Html content;
    content << "x";
    EXPECT_EQ(page::notice(Mood::kBad, content).text(),
              "<div class=\"notice bad\" role=\"alert\">x</div>\n");
    EXPECT_EQ(page::notice(Mood::kGood, content).text(),
              "<div class=\"notice good\" role=\"status\">x</div>\n");
    EXPECT_EQ(page::notice(Mood::kNeutral, content).text(), "<div class=\"notice\">x</div>\n");
}

TEST(ShareLink, leadsToTheSharesPageWhateverTheName)
{
    EXPECT_EQ(page::shareLink("a b&<c>").text(),
              "<a href=\"/cgi-bin/vokpage/share?name=a%20b%26%3Cc%3E\">"
              "<bdi>a b&amp;&lt;c&gt;</bdi></a>");
}

} // namespace
