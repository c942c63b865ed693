// SPDX-License-Identifier: MIT
//
// deed.h: what a form has done. The answer to a form that did something leads to a page, so that
// reloading it does nothing again; the browser carries along in a cookie what that page has to say.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "page/html.h"
#include "page/pages.h"

namespace page {

struct Deed {
    std::string kind;               ///< one word
    std::vector<std::string> names; ///< texts without newlines
};

/// A sentence for each kind of deed, with a "{}" for each of its names.
struct DeedSentence {
    std::string_view kind;
    const char* sentence; ///< marked for translation
};

[[nodiscard]] Cookie cookieOf(const Deed& deed);

/// The answer to a form that has done something: the page at a path is to tell it.
/// @param path  a text that stays
[[nodiscard]] Page leadTo(std::string_view path, const Deed& deed);

/// The deed in a cookie's value; nothing if that is none.
[[nodiscard]] std::optional<Deed> readDeed(std::string_view cookie);

/// What the browser's cookie says was done, as a notice; nothing if it is no deed of these kinds.
/// The browser is told to forget it.
[[nodiscard]] Html tellDeed(const Request& request, std::span<const DeedSentence> sentences,
                            std::vector<Cookie>& cookies);

} // namespace page
