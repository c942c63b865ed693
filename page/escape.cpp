// SPDX-License-Identifier: MIT
#include "page/escape.h"

#include <algorithm>
#include <array>

#include "view/utf8.h"

namespace page {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

bool isControl(char32_t code)
{
    const bool isAscii = (code < 0x20 && code != '\n' && code != '\t') || code == 0x7F;
    const bool isOther = code >= 0x80 && code < 0xA0;
    const bool isLineEnd = code == 0x2028 || code == 0x2029;
    return isAscii || isOther || isLineEnd;
}

struct Reference {
    char32_t code;
    std::string_view text;
};

constexpr auto kReferences = std::to_array<Reference>({
    {'&', "&amp;"},
    {'<', "&lt;"},
    {'>', "&gt;"},
    {'"', "&quot;"},
    {'\'', "&#39;"},
});

void appendCharacter(std::string& out, char32_t code, std::string_view bytes)
{
    const auto* reference = std::ranges::find(kReferences, code, &Reference::code);
    if (isControl(code)) {
        out += kReplacement;
    } else if (reference != kReferences.end()) {
        out += reference->text;
    } else {
        out += bytes;
    }
}

} // namespace

std::string escape(std::string_view bytes)
{
    std::string out;
    while (!bytes.empty()) {
        const std::optional<view::Character> character = view::firstCharacter(bytes);
        if (!character) {
            out += kReplacement;
            bytes.remove_prefix(1);
            continue;
        }
        appendCharacter(out, character->code, bytes.substr(0, character->size));
        bytes.remove_prefix(character->size);
    }
    return out;
}

} // namespace page
