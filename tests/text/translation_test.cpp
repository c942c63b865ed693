// SPDX-License-Identifier: MIT
#include "text/translation.h"

#include <gtest/gtest.h>
#include <string>

namespace {

using text::fill;

class Translation : public testing::Test {
  protected:
    void TearDown() override { text::speak(*core::findLanguage("en")); }
};

TEST_F(Translation, isEnglishAtFirst)
{
    EXPECT_STREQ(text::spoken().code, "en");
    EXPECT_STREQ(text::tr("Shares"), "Shares");
    EXPECT_STREQ(text::trn("{} share", "{} shares", 1), "{} share");
    EXPECT_STREQ(text::trn("{} share", "{} shares", 0), "{} shares");
    EXPECT_STREQ(text::trc("a month", "May"), "May");
    EXPECT_STREQ(text::mark("Shares"), "Shares");
}

TEST_F(Translation, isThatOfTheCatalogue)
{
    text::speak(*core::findLanguage("ge"));
    EXPECT_STREQ(text::spoken().code, "ge");
    EXPECT_STREQ(text::tr("Shares"), "Freigaben");
    EXPECT_STREQ(text::trn("It lists {1} share, {2} of them internal.",
                           "It lists {1} shares, {2} of them internal.", 1),
                 "Es wird {1} Freigabe aufgelistet, davon {2} intern.");
    EXPECT_STREQ(text::trn("It lists {1} share, {2} of them internal.",
                           "It lists {1} shares, {2} of them internal.", 2),
                 "Es werden {1} Freigaben aufgelistet, davon {2} intern.");
    EXPECT_STREQ(text::tr("Nobody has translated this."), "Nobody has translated this.");
    EXPECT_STREQ(text::trn("{} thing", "{} things", 2), "{} things");
    EXPECT_STREQ(text::trc("a month", "Nobody"), "Nobody");
    text::speak(*core::findLanguage("en"));
    EXPECT_STREQ(text::spoken().code, "en");
    EXPECT_STREQ(text::tr("Shares"), "Shares");
}

TEST_F(Translation, isEnglishWithoutACatalogue)
{
    const core::Language klingon = {"kl", "klingon", "8", "tlhIngan Hol", "tlh", "tlh"};
    text::speak(*core::findLanguage("ge"));
    text::speak(klingon);
    EXPECT_STREQ(text::spoken().code, "en");
    EXPECT_STREQ(text::tr("Shares"), "Shares");
}

TEST(Fill, putsTextsIntoTheirPlaces)
{
    EXPECT_EQ(fill("nothing", {"a"}), "nothing");
    EXPECT_EQ(fill("", {}), "");
    EXPECT_EQ(fill("{} and {}.", {"a", "b"}), "a and b.");
    EXPECT_EQ(fill("{2} before {1}", {"a", "b"}), "b before a");
    EXPECT_EQ(fill("{}{}{}", {"a", "b"}), "ab");
    EXPECT_EQ(fill("{9}", {"a"}), "");
}

TEST(Fill, leavesOtherBracesAndWhatTextsHold)
{
    EXPECT_EQ(fill("{ {x} {0} {12} { } {", {"a"}), "{ {x} {0} {12} { } {");
    EXPECT_EQ(fill("{} {}", {"{}", "{1}"}), "{} {1}");
    EXPECT_EQ(fill("{{}}", {"a"}), "{a}");
}

} // namespace
