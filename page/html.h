// SPDX-License-Identifier: MIT
//
// html.h: markup that nothing foreign gets into. What stands in the source is markup; everything
// else is text, and becomes part of a page by being escaped. The types see to it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace page {

// NOLINTBEGIN(modernize-avoid-c-arrays): a reference to one tells a literal from a pointer
/// Markup that stands in the source. Nothing that is known only at run time converts to it.
class Literal {
  public:
    template <std::size_t Size>
    consteval Literal(const char (&markup)[Size]) : markup_(checked(markup), Size - 1)
    {}

    [[nodiscard]] constexpr std::string_view view() const { return markup_; }

  private:
    // Reading it all at compile time keeps out arrays that are filled at run time.
    template <std::size_t Size> static consteval const char* checked(const char (&markup)[Size])
    {
        for (std::size_t at = 0; at + 1 < Size; ++at) {
            if (markup[at] == '\0') {
                throw "markup ends where its text ends";
            }
        }
        return markup;
    }

    std::string_view markup_;
};
// NOLINTEND(modernize-avoid-c-arrays)

/// Any bytes at all, to be shown as they are.
struct Text {
    std::string_view bytes;
};

class Script;

/// A part of a page.
class Html {
  public:
    Html() = default;

    Html& operator<<(Literal markup);
    Html& operator<<(Text text);
    Html& operator<<(const Html& part);
    Html& operator<<(const Script& script); ///< for the inside of a script element

    [[nodiscard]] const std::string& text() const { return text_; }

  private:
    std::string text_;
};

} // namespace page
