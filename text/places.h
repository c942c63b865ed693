// SPDX-License-Identifier: MIT
//
// places.h: the places in a sentence that take a text: "{}" the next one, "{1}" to "{9}" one by its
// number.
#pragma once

#include <cstddef>
#include <string_view>

namespace text {

/// Goes through a sentence from its start to its end.
/// @param onWords  is given the words between two places
/// @param onPlace  is given the index of the text that a place takes, from 0 on
template <typename OnWords, typename OnPlace>
void splitAtPlaces(std::string_view sentence, OnWords onWords, OnPlace onPlace)
{
    std::size_t next = 0;
    std::size_t wordsStart = 0;
    for (std::size_t at = sentence.find('{'); at != sentence.npos;
         at = sentence.find('{', at + 1)) {
        const std::string_view rest = sentence.substr(at);
        const bool isNext = rest.starts_with("{}");
        if (!isNext && (rest.size() < 3 || rest[1] < '1' || rest[1] > '9' || rest[2] != '}')) {
            continue;
        }
        onWords(sentence.substr(wordsStart, at - wordsStart));
        onPlace(isNext ? next++ : static_cast<std::size_t>(rest[1] - '1'));
        wordsStart = at + (isNext ? 2 : 3);
    }
    onWords(sentence.substr(wordsStart));
}

} // namespace text
