// SPDX-License-Identifier: MIT
//
// phrase.h: a sentence with foreign text in it, written whole in one place.
#pragma once

#include <span>
#include <string>

#include "page/html.h"

namespace page {

/// A sentence, with one of the texts in place of each "{}". A text is set apart, as it may run the
/// other way; without one for it a "{}" becomes nothing.
[[nodiscard]] Html phrase(Literal sentence, std::span<const std::string> texts);

} // namespace page
