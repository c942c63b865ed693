// SPDX-License-Identifier: MIT
//
// layout.h: the frame that all pages share, and small parts that several of them have.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "page/html.h"
#include "page/pages.h"
#include "page/visitor.h"

namespace page {

/// Where the web server has the program.
inline constexpr Literal kProgramUrl = "/cgi-bin/vokpage";

/// A page, who may read it and who may send it forms. Without a level nobody can.
struct PageEntry {
    std::string_view path; ///< after the program's name
    const char* label;     ///< in the navigation, marked for translation
    Page (*make)(Visit& visit);
    std::optional<Level> read;
    std::optional<Level> write;
    bool isListed; ///< in the navigation
};

struct Frame {
    std::span<const PageEntry> pages; ///< in the order of the navigation
    std::string_view path;            ///< of the page that is shown
    std::string nonce;                ///< marks the page's own script
    std::string applianceName;        ///< empty where it is not known
    Visitor visitor = {};             ///< nobody in particular where that is not known
    std::string token = {};           ///< for the forms of the frame; none without it
    std::string query = {};           ///< that follows the path in the page's address
};

[[nodiscard]] Html layOut(const Frame& frame, const Page& page, const Script& script);

/// The start of a form that is sent to a page, with the token in it.
[[nodiscard]] Html openForm(std::string_view token, Literal path);

/// A share's name, which leads to its page.
[[nodiscard]] Html shareLink(std::string_view name);

/// A pair of a list of facts; a value that is not known is said to be so.
[[nodiscard]] Html fact(std::string_view label, std::string_view value);

/// A sign and a word, and a class for the colour: none of them stands alone.
[[nodiscard]] Html badge(Literal colour, Literal sign, std::string_view word);

/// The list of the setup's steps. The first of them comes only once.
[[nodiscard]] Html setupSteps(bool isFirstTime);

/// How long a name may be, in words. Foreign letters count for more than one byte.
[[nodiscard]] std::string nameRule(std::size_t mostBytes);

/// What is wrong with a field, for the place right below it; nothing if there are no words.
[[nodiscard]] Html complaint(Literal id, std::string_view words);

/// What a field says of itself if it has such a complaint.
[[nodiscard]] Html invalidMark(Literal id, std::string_view words);

/// Something that the reader must be told, and whether it is bad.
enum class Mood { kGood, kNeutral, kBad };
[[nodiscard]] Html notice(Mood mood, const Html& content);

} // namespace page
