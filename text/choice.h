// SPDX-License-Identifier: MIT
//
// choice.h: which of the appliance's languages somebody wants.
#pragma once

#include <string_view>

#include "core/languages.h"

namespace text {

/// The language that a tag means, as browsers ("zh-Hant-TW", "de-CH") or environments
/// ("de_CH.UTF-8@euro") write it; null if the appliance does not speak it. Chinese without anything
/// that says otherwise is written in simplified characters.
[[nodiscard]] const core::Language* languageOf(std::string_view tag);

/// The language that a browser's "Accept-Language" prefers among those of the appliance; null if it
/// names none of them.
[[nodiscard]] const core::Language* preferredLanguage(std::string_view header);

/// The language that the environment of a terminal asks for: LC_ALL, LC_MESSAGES or LANG, the first
/// that has a value, unless LANGUAGE lists others; English if it is none of the appliance's.
[[nodiscard]] const core::Language& languageOfEnvironment();

} // namespace text
