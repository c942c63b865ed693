// SPDX-License-Identifier: MIT
//
// nearest_word.h: what somebody has probably meant by a mistyped word.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace client {

/// The word of a list that a mistyped one is most like: at most a third of its letters, and never
/// more than two, are wrong, missing, too many or in each other's place.
/// @return "" if none is like it; of several, the first
[[nodiscard]] std::string nearestWord(std::string_view mistyped,
                                      std::span<const std::string> words);

} // namespace client
