// SPDX-License-Identifier: MIT
//
// translation.h: sentences in the language of the person who reads them. A sentence stands in the
// source in English and is translated by a catalogue (po/), as GNU gettext has it; xgettext
// collects what stands in tr(), trn(), trc() and mark(). Without a catalogue, and for a sentence
// that it does not have, the English one is shown.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

#include "core/languages.h"

namespace text {

/// Translates into a language from now on. To be called once, before the first sentence.
void speak(const core::Language& language);

/// The language that sentences are in: English, if speak() has not found a catalogue.
[[nodiscard]] const core::Language& spoken();

/// A sentence's translation.
[[nodiscard]] const char* tr(const char* sentence);

/// A translation with the plural form that suits a number. The number itself has its place, a "{}",
/// in the sentence: fill(trn("{} share", "{} shares", n), {std::to_string(n)}).
[[nodiscard]] const char* trn(const char* one, const char* many, std::uint64_t count);

/// The translation of a word that means different things in different places.
/// @param context  says to translators which place this is
[[nodiscard]] const char* trc(const char* context, const char* word);

/// Marks a sentence of a table for translation, which happens where it is shown: tr(row.words).
[[nodiscard]] constexpr const char* mark(const char* sentence)
{
    return sentence;
}

/// A sentence with texts in its places. A "{}" takes the next text and a "{2}" the second one,
/// since languages have their own order of words. A place without a text becomes nothing.
[[nodiscard]] std::string fill(std::string_view sentence,
                               std::initializer_list<std::string_view> texts);

} // namespace text
