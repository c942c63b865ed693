// SPDX-License-Identifier: MIT
#include "page/setup_form.h"

#include <gtest/gtest.h>
#include <string>

namespace {

using page::complainOfHostName;
using page::complainOfLanguage;
using page::complainOfShareName;
using page::Form;
using page::SetupStep;
using page::Standing;
using page::standingOf;

TEST(SetupLanguage, isOneThatTheLanguageScriptKnows)
{
    for (const char* name :
         {"english", "french", "german", "spanish", "italian", "chinese", "traditional_chinese"}) {
        EXPECT_EQ(complainOfLanguage(name), "") << name;
    }
    for (const char* name : {"", "German", "klingon", "german; reboot", "germa"}) {
        EXPECT_EQ(complainOfLanguage(name), "Choose one of the languages.") << name;
    }
}

TEST(SetupHostName, hasLettersDigitsAndHyphens)
{
    for (const std::string& name :
         {std::string("ab"), std::string("Storage-2"), std::string(32, 'x')}) {
        EXPECT_EQ(complainOfHostName(name), "") << name;
    }
}

TEST(SetupHostName, keepsTheShellOut)
{
    for (const std::string& name :
         {std::string(), std::string("a"), std::string(33, 'x'), std::string("a b"),
          std::string("a;b"), std::string("$(id)"), std::string("a|b"), std::string("a\nb"),
          std::string("a'b"), std::string("a_b"), std::string("a.b"), std::string("\xC3\x89t"),
          std::string("a\0b", 3)}) {
        EXPECT_EQ(complainOfHostName(name),
                  "A name has 2 to 32 characters: letters A to Z, digits and hyphens.")
            << name;
    }
}

TEST(SetupShareName, mayHaveAnyLetters)
{
    for (const std::string& name : {std::string("P"),
                                    std::string("\xC3\x96"
                                                "ffentlich & 'mehr'"),
                                    std::string(64, 'x')}) {
        EXPECT_EQ(complainOfShareName(name), "") << name;
    }
}

TEST(SetupShareName, isNeitherEmptyNorTooLong)
{
    EXPECT_EQ(complainOfShareName(""), "Give the share a name.");
    EXPECT_EQ(complainOfShareName(std::string(65, 'x')), "This name is too long.");
}

TEST(SetupShareName, hasNothingThatAFolderCannotHave)
{
    for (const std::string& name :
         {std::string("a/b"), std::string("a\\b"), std::string("a:b"), std::string("a*"),
          std::string("a?"), std::string("a\"b"), std::string("<a>"), std::string("a|b"),
          std::string("a\nb"), std::string("a\tb"), std::string("a\x7F"), std::string("a\0b", 3),
          std::string("a\xFF")}) {
        EXPECT_EQ(complainOfShareName(name),
                  "The name of a share has none of the characters / \\ : * ? \" < > | in it.")
            << name;
    }
}

TEST(SetupValues, areReadWithoutBlanksAroundThem)
{
    const auto values =
        page::readSetupValues(Form("language=german&host_name=+box%09&share_name=++My+share+"));
    EXPECT_EQ(values.language, "german");
    EXPECT_EQ(values.hostName, "box");
    EXPECT_EQ(values.shareName, "My share");
    EXPECT_EQ(page::readSetupValues(Form("host_name=++")).hostName, "");
}

void expectStanding(const std::string& fields, SetupStep step, bool isRefused)
{
    const Standing standing = standingOf(Form(fields));
    EXPECT_EQ(standing.step, step) << fields;
    EXPECT_EQ(standing.isRefused, isRefused) << fields;
}

const std::string kNamed = "language=german&host_name=box&";
const std::string kShared = kNamed + "share_name=Public&";

TEST(SetupStanding, startsAtTheFirstStep)
{
    expectStanding("", page::kNaming, false);
    expectStanding("next_page=", page::kNaming, false);
    for (const char* number : {"0", "x", "-1", "4", "1x", " 1", "99999999999"}) {
        expectStanding(kShared + "next_page=" + number, page::kNaming, false);
    }
}

TEST(SetupStanding, goesOnWithGoodAnswers)
{
    expectStanding(kNamed + "next_page=1", page::kSharing, false);
    expectStanding(kShared + "next_page=2", page::kSummary, false);
    expectStanding(kShared + "next_page=3", page::kApplied, false);
}

TEST(SetupStanding, staysWhereAnAnswerIsNotGood)
{
    for (const char* number : {"1", "2", "3"}) {
        const std::string next = std::string("&next_page=") + number;
        expectStanding("language=german&host_name=x&share_name=Public" + next, page::kNaming, true);
        expectStanding("language=x&host_name=box&share_name=Public" + next, page::kNaming, true);
    }
    for (const char* number : {"2", "3"}) {
        expectStanding(kNamed + "share_name=a/b&next_page=" + number, page::kSharing, true);
        expectStanding(kNamed + "next_page=" + number, page::kSharing, true);
    }
}

TEST(SetupStanding, goesBackWhateverIsInTheFields)
{
    expectStanding("language=x&next_page=0", page::kNaming, false);
    expectStanding(kNamed + "share_name=a/b&next_page=1", page::kSharing, false);
}

} // namespace
