// SPDX-License-Identifier: MIT
#include "view/utf8.h"

#include <utf8.h>

namespace view {

std::optional<Character> firstCharacter(std::string_view text)
{
    const char* const start = text.data();
    const char* rest = start;
    try {
        const char32_t code = utf8::next(rest, start + text.size());
        return Character{code, static_cast<std::size_t>(rest - start)};
    } catch (const utf8::exception&) {
        return std::nullopt;
    }
}

bool isUtf8(std::string_view text)
{
    return utf8::is_valid(text.begin(), text.end());
}

} // namespace view
