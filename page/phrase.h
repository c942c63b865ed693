// SPDX-License-Identifier: MIT
//
// phrase.h: a sentence with foreign text or markup in it, written whole in one place.
#pragma once

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

#include "page/html.h"

namespace page {

/// A text that may run the other way, set apart from the words around it.
[[nodiscard]] Html apart(std::string_view text);

/// A sentence with parts of a page in its places: "{}" takes the next part, "{2}" the second one.
/// The words between them are text. A place without a part becomes nothing.
[[nodiscard]] Html phrase(std::string_view sentence, std::initializer_list<Html> parts);

/// The same with texts, each of them set apart.
[[nodiscard]] Html phrase(std::string_view sentence, std::span<const std::string> texts);

} // namespace page
