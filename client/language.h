// SPDX-License-Identifier: MIT
//
// language.h: the language that vokctl speaks.
#pragma once

#include <span>

#include "core/languages.h"

namespace client {

/// The language of a command line's sentences: the environment's (text/choice.h); English if
/// programs read what is printed, so that it is the same on every appliance: with --json or --csv,
/// and of "metrics", "notify" and "raw".
/// @param words  the command line, with the program's name first
[[nodiscard]] const core::Language& languageFor(std::span<char* const> words);

} // namespace client
