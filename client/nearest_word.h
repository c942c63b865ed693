// SPDX-License-Identifier: MIT
//
// nearest_word.h: the word that was probably meant by a mistyped one.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace client {

/// Finds the word of a list that is most like a mistyped one. At most a third of its letters, and
/// at most two, may be wrong, missing, too many or swapped.
/// @return "" if there is no such word; the first one of several
[[nodiscard]] std::string nearestWord(std::string_view mistyped,
                                      std::span<const std::string> words);

} // namespace client
