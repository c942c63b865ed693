// SPDX-License-Identifier: MIT
#include "client/language.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "text/choice.h"

namespace client {
namespace {

/// The words that ask for an output for programs. A flag can have a value: "--json=true".
bool asksForData(std::string_view word)
{
    constexpr auto kWords =
        std::to_array<std::string_view>({"--json", "--csv", "metrics", "notify", "raw"});
    return std::ranges::find(kWords, word.substr(0, word.find('='))) != kWords.end();
}

} // namespace

const core::Language& languageFor(std::span<char* const> words)
{
    const auto end = std::ranges::find(words, std::string_view("--"));
    const bool isForPrograms = std::any_of(words.begin(), end, asksForData);
    return isForPrograms ? core::kEnglish : text::languageOfEnvironment();
}

} // namespace client
