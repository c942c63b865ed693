// SPDX-License-Identifier: MIT
#include "text/choice.h"

#include <array>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

namespace {

std::string codeOf(const core::Language* language)
{
    return (language != nullptr) ? language->code : "(none)";
}

struct Case {
    const char* words;
    const char* code;
};

TEST(LanguageOf, knowsTagsOfBrowsersAndEnvironments)
{
    constexpr auto kCases = std::to_array<Case>({
        {"en", "en"},         {"en-US", "en"},       {"fr", "fr"},
        {"FR-ca", "fr"},      {"de", "ge"},          {"de_CH.UTF-8@euro", "ge"},
        {"de@euro", "ge"},    {"es_419", "sp"},      {"it_IT.utf8", "it"},
        {"zh", "sc"},         {"zh-CN", "sc"},       {"zh_SG", "sc"},
        {"zh-Hant", "tc"},    {"zh_TW.UTF-8", "tc"}, {"zh-hk", "tc"},
        {"zh-MO", "tc"},      {"ge", "(none)"},      {"deu", "(none)"},
        {"pt-BR", "(none)"},  {"*", "(none)"},       {"", "(none)"},
        {"-", "(none)"},      {"zh-Hans-HK", "sc"},  {"zh-Hans-TW", "sc"},
        {"zh_Hant_CN", "tc"},
    });
    for (const Case& each : kCases) {
        EXPECT_EQ(codeOf(text::languageOf(each.words)), each.code) << each.words;
    }
}

TEST(PreferredLanguage, isTheOneWithTheGreatestWeight)
{
    constexpr auto kCases = std::to_array<Case>({
        {"de", "ge"},
        {"de-CH,de;q=0.9,en;q=0.8", "ge"},
        {"pt-BR,pt;q=0.9,it;q=0.5,fr;q=0.7", "fr"},
        {"en;q=0.1, zh-TW ; q=0.2", "tc"},
        {"es;q=0,it;q=0.001", "it"},
        {"fr;q=2,de", "fr"},
        {"de;q=0.5,fr;q=0.5", "ge"},
        {"de;q=nonsense,it;q=0.3", "it"},
        {"de;q=-1", "(none)"},
        {"de;Q=0", "(none)"},
        {"de;q=nan,it;q=0.1", "it"},
        {",,;,de", "ge"},
        {"*", "(none)"},
        {"pt", "(none)"},
        {"", "(none)"},
    });
    for (const Case& each : kCases) {
        EXPECT_EQ(codeOf(text::preferredLanguage(each.words)), each.code) << each.words;
    }
}

class Environment : public testing::Test {
  protected:
    void SetUp() override
    {
        for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG", "LANGUAGE"}) {
            ::unsetenv(name);
        }
    }

    static std::string code() { return text::languageOfEnvironment().code; }
};

TEST_F(Environment, withoutALocaleIsEnglish)
{
    EXPECT_EQ(code(), "en");
    ::setenv("LANG", "", 1);
    ::setenv("LANGUAGE", "de", 1);
    EXPECT_EQ(code(), "en");
    for (const char* plain : {"C", "POSIX", "C.UTF-8"}) {
        ::setenv("LANG", plain, 1);
        EXPECT_EQ(code(), "en") << plain;
    }
}

TEST_F(Environment, namesTheLanguageInTheCustomaryOrder)
{
    ::setenv("LANG", "it_IT.UTF-8", 1);
    EXPECT_EQ(code(), "it");
    ::setenv("LC_MESSAGES", "fr_FR", 1);
    EXPECT_EQ(code(), "fr");
    ::setenv("LC_ALL", "es_ES", 1);
    EXPECT_EQ(code(), "sp");
    ::setenv("LANGUAGE", "pt:zh_TW:de", 1);
    EXPECT_EQ(code(), "tc");
    ::setenv("LANGUAGE", "pt", 1);
    EXPECT_EQ(code(), "sp");
    ::setenv("LC_ALL", "pt_BR", 1);
    EXPECT_EQ(code(), "en");
}

} // namespace
