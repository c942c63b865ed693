// SPDX-License-Identifier: MIT
#include "page/setup_form.h"

#include <algorithm>
#include <array>

#include "core/bytes.h"
#include "core/languages.h"
#include "text/translation.h"
#include "view/utf8.h"

namespace page {
namespace {

using text::tr;

bool isOfHostName(char c)
{
    return core::isAsciiAlphanumeric(core::byteOf(c)) || c == '-';
}

bool isControl(char c)
{
    return static_cast<unsigned char>(c) < ' ' || c == '\x7F';
}

/// The step that the form asks for.
SetupStep wantedStep(std::string_view field)
{
    constexpr auto kNumbers = std::to_array<std::string_view>({"0", "1", "2", "3"});
    const auto* found = std::ranges::find(kNumbers, field);
    return (found != kNumbers.end()) ? static_cast<SetupStep>(found - kNumbers.begin()) : kNaming;
}

} // namespace

SetupValues readSetupValues(const Form& form)
{
    return {
        .language = std::string(form.value("language")),
        .hostName = std::string(trim(form.value("host_name"))),
        .shareName = std::string(trim(form.value("share_name"))),
    };
}

std::string_view complainOfLanguage(std::string_view name)
{
    return (core::findLanguageByName(name) != nullptr) ? "" : tr("Choose one of the languages.");
}

std::string_view complainOfHostName(std::string_view name)
{
    constexpr std::size_t kShortest = 2;
    constexpr std::size_t kLongest = 32;
    const bool isGood = name.size() >= kShortest && name.size() <= kLongest &&
                        std::ranges::all_of(name, isOfHostName);
    return isGood ? "" : tr("A name has 2 to 32 characters: letters A to Z, digits and hyphens.");
}

std::string_view complainOfShareName(std::string_view name)
{
    constexpr std::size_t kLongest = 64;
    constexpr std::string_view kForbidden = "/\\:*?\"<>|";
    if (name.empty()) {
        return tr("Give the share a name.");
    }
    if (name.size() > kLongest) {
        return tr("This name is too long.");
    }
    if (!view::isUtf8(name) || std::ranges::any_of(name, isControl) ||
        name.find_first_of(kForbidden) != name.npos) {
        return tr("The name of a share has none of the characters / \\ : * ? \" < > | in it.");
    }
    return "";
}

Standing standingOf(const Form& form)
{
    const SetupStep wanted = wantedStep(form.value("next_page"));
    const SetupValues values = readSetupValues(form);
    const bool isNamed =
        complainOfLanguage(values.language).empty() && complainOfHostName(values.hostName).empty();
    if (wanted > kNaming && !isNamed) {
        return {.step = kNaming, .isRefused = true};
    }
    if (wanted > kSharing && !complainOfShareName(values.shareName).empty()) {
        return {.step = kSharing, .isRefused = true};
    }
    return {.step = wanted, .isRefused = false};
}

} // namespace page
