// SPDX-License-Identifier: MIT
#include "core/languages.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using Strings = std::vector<std::string>;

TEST(Languages, areTheSevenOfTheProtocolAndOfTheLanguageScript)
{
    std::vector<Strings> rows;
    for (const core::Language& language : core::kLanguages) {
        rows.push_back({language.code, language.name, language.digit, language.ownName,
                        language.locale, language.tag});
    }
    EXPECT_EQ(rows, (std::vector<Strings>{
                        {"en", "english", "1", "English", "en", "en"},
                        {"fr", "french", "2", "Français", "fr", "fr"},
                        {"ge", "german", "3", "Deutsch", "de", "de"},
                        {"sp", "spanish", "4", "Español", "es", "es"},
                        {"it", "italian", "5", "Italiano", "it", "it"},
                        {"sc", "chinese", "6", "简体中文", "zh_CN", "zh-Hans"},
                        {"tc", "traditional_chinese", "7", "繁體中文", "zh_TW", "zh-Hant"},
                    }));
}

TEST(Languages, areFoundByTheWholeCodeOrName)
{
    for (const core::Language& language : core::kLanguages) {
        EXPECT_EQ(core::findLanguage(language.code), &language);
        EXPECT_EQ(core::findLanguageByName(language.name), &language);
    }
    for (const char* other : {"", "e", "EN", "en ", "de", "english"}) {
        EXPECT_EQ(core::findLanguage(other), nullptr) << other;
    }
    for (const char* other : {"", "German", "germa", "german ", "klingon", "en"}) {
        EXPECT_EQ(core::findLanguageByName(other), nullptr) << other;
    }
}

TEST(Languages, fiveHaveAShareNameInTheOrderOfTheSearch)
{
    Strings codes;
    for (const core::Language* language : core::kShareNameLanguages) {
        codes.emplace_back(language->code);
    }
    EXPECT_EQ(codes, (Strings{"en", "fr", "ge", "it", "sp"}));
}

} // namespace
