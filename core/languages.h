// SPDX-License-Identifier: MIT
//
// languages.h: the languages of the appliance, with all names that they have.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace core {

struct Language {
    const char* code;    ///< in requests and answers, and in the variable "language_current"
    const char* name;    ///< as the language script takes and prints it
    const char* digit;   ///< value of the variable "pel_language"
    const char* ownName; ///< in the language itself, in UTF-8
    const char* locale;  ///< of its catalogue of translations
    const char* tag;     ///< for the "lang" of a web page
};

/// "pel_language" is the digit of the first language whose name is a part of the script's answer,
/// so traditional Chinese gives the digit of Chinese.
inline constexpr auto kLanguages = std::to_array<Language>({
    {"en", "english", "1", "English", "en", "en"},
    {"fr", "french", "2", "Fran\u00E7ais", "fr", "fr"},
    {"ge", "german", "3", "Deutsch", "de", "de"},
    {"sp", "spanish", "4", "Espa\u00F1ol", "es", "es"},
    {"it", "italian", "5", "Italiano", "it", "it"},
    {"sc", "chinese", "6", "\u7B80\u4F53\u4E2D\u6587", "zh_CN", "zh-Hans"},
    {"tc", "traditional_chinese", "7", "\u7E41\u9AD4\u4E2D\u6587", "zh_TW", "zh-Hant"},
});

/// What is spoken if nothing else is known.
inline constexpr const Language& kEnglish = kLanguages.front();

/// @return the language with a code; null for another code
[[nodiscard]] constexpr const Language* findLanguage(std::string_view code)
{
    const auto* found = std::ranges::find(kLanguages, code, &Language::code);
    return (found != kLanguages.end()) ? found : nullptr;
}

/// @return the language with a name, which must be the whole name; null for another name
[[nodiscard]] constexpr const Language* findLanguageByName(std::string_view name)
{
    const auto* found = std::ranges::find(kLanguages, name, &Language::name);
    return (found != kLanguages.end()) ? found : nullptr;
}

/// The languages in which the first share has a name of its own, in the order in which the script's
/// answer is searched for them: if it holds several, the first of these counts. The appliance keeps
/// no share name for either Chinese.
inline constexpr auto kShareNameLanguages = std::to_array<const Language*>({
    findLanguage("en"),
    findLanguage("fr"),
    findLanguage("ge"),
    findLanguage("it"),
    findLanguage("sp"),
});

} // namespace core
