// SPDX-License-Identifier: MIT
//
// escape.h: foreign text made fit for markup.
#pragma once

#include <string>
#include <string_view>

namespace page {

/// Text as it may stand between tags, between the quotes of an attribute and in a comment of a
/// script: the characters that mean something there are written as references. Bytes that are no
/// UTF-8, and characters that control something (the ends of lines that only scripts know among
/// them), become U+FFFD; a newline and a tab stay.
[[nodiscard]] std::string escape(std::string_view bytes);

} // namespace page
