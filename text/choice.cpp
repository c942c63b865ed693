// SPDX-License-Identifier: MIT
#include "text/choice.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>

namespace text {
namespace {

constexpr std::string_view kBlanks = " \t";

std::string_view trimmed(std::string_view words)
{
    const std::size_t start = std::min(words.find_first_not_of(kBlanks), words.size());
    words.remove_prefix(start);
    return words.substr(0, words.find_last_not_of(kBlanks) + 1);
}

/// Cuts off what stands before a separator, or all of it if there is none.
std::string_view takePart(std::string_view& list, char separator)
{
    const std::size_t end = std::min(list.find(separator), list.size());
    const std::string_view part = list.substr(0, end);
    list.remove_prefix(std::min(end + 1, list.size()));
    return trimmed(part);
}

char toLower(char letter)
{
    return (letter >= 'A' && letter <= 'Z') ? static_cast<char>(letter - 'A' + 'a') : letter;
}

/// A tag in small letters and with hyphens, without character set and variant.
std::string plainTag(std::string_view tag)
{
    std::string plain(tag.substr(0, tag.find_first_of(".@")));
    std::ranges::replace(plain, '_', '-');
    std::ranges::transform(plain, plain.begin(), toLower);
    return plain;
}

/// Whether the parts of a tag say traditional Chinese. The script comes before the country, and
/// wins: who reads simplified characters in Hong Kong asks for "zh-Hans-HK".
bool isTraditional(std::string_view rest)
{
    constexpr auto kParts = std::to_array<std::string_view>({"hant", "tw", "hk", "mo"});
    while (!rest.empty()) {
        const std::string_view part = takePart(rest, '-');
        if (part == "hans") {
            return false;
        }
        if (std::ranges::find(kParts, part) != kParts.end()) {
            return true;
        }
    }
    return false;
}

/// The weight of an entry in thousandths: what follows ";q=". Browsers write at most three
/// decimals.
int weightOf(std::string_view parameters)
{
    const std::string_view parameter = takePart(parameters, ';');
    if (!parameter.starts_with("q=") && !parameter.starts_with("Q=")) {
        return 1000;
    }
    constexpr double kThousandths = 1000;
    const double weight = std::strtod(std::string(parameter.substr(2)).c_str(), nullptr);
    // In this order, what is not a number becomes 0.
    return static_cast<int>(std::min(std::max(0.0, weight), 1.0) * kThousandths);
}

std::string_view variable(const char* name)
{
    const char* value = std::getenv(name); // NOLINT(concurrency-mt-unsafe): there is one thread
    return (value != nullptr) ? value : "";
}

/// The locale that is in force; "C" if the environment names none.
std::string_view localeOfEnvironment()
{
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (!variable(name).empty()) {
            return variable(name);
        }
    }
    return "C";
}

} // namespace

const core::Language* languageOf(std::string_view tag)
{
    const std::string plain = plainTag(tag);
    std::string_view rest = plain;
    const std::string_view language = takePart(rest, '-');
    if (language == "zh") {
        return core::findLanguage(isTraditional(rest) ? "tc" : "sc");
    }
    const auto* found = std::ranges::find(core::kLanguages, language, &core::Language::locale);
    return (found != core::kLanguages.end()) ? found : nullptr;
}

const core::Language* preferredLanguage(std::string_view header)
{
    const core::Language* best = nullptr;
    int most = 0;
    while (!header.empty()) {
        std::string_view entry = takePart(header, ',');
        const core::Language* language = languageOf(takePart(entry, ';'));
        const int weight = weightOf(entry);
        if (language != nullptr && weight > most) {
            best = language;
            most = weight;
        }
    }
    return best;
}

const core::Language& languageOfEnvironment()
{
    const std::string_view locale = localeOfEnvironment();
    // Who asks for plain C gets no translation, as with every other program.
    if (locale == "C" || locale == "POSIX" || locale.starts_with("C.")) {
        return core::kEnglish;
    }
    std::string_view list = variable("LANGUAGE");
    while (!list.empty()) {
        if (const core::Language* language = languageOf(takePart(list, ':'))) {
            return *language;
        }
    }
    const core::Language* language = languageOf(locale);
    return (language != nullptr) ? *language : core::kEnglish;
}

} // namespace text
