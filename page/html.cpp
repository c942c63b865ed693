// SPDX-License-Identifier: MIT
#include "page/html.h"

#include <algorithm>
#include <array>

#include "page/script.h"

namespace page {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

unsigned byteAt(std::string_view bytes, std::size_t at)
{
    return static_cast<unsigned char>(bytes[at]);
}

struct CharacterForm {
    std::size_t size;
    unsigned mask; ///< of the first byte: the bits that tell the size
    unsigned mark; ///< and what they are
    char32_t smallest;
};

constexpr auto kForms = std::to_array<CharacterForm>({
    {1, 0x80U, 0x00U, 0},
    {2, 0xE0U, 0xC0U, 0x80},
    {3, 0xF0U, 0xE0U, 0x800},
    {4, 0xF8U, 0xF0U, 0x10000},
});

struct Character {
    std::size_t size; ///< 0 where the bytes are none
    char32_t code;
};

bool isCode(char32_t code)
{
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    return code <= 0x10FFFF && !isSurrogate;
}

Character decode(std::string_view bytes)
{
    constexpr Character kNone = {0, 0};
    const unsigned first = bytes.empty() ? 0xFFU : byteAt(bytes, 0);
    const auto* form = std::ranges::find_if(
        kForms, [first](const CharacterForm& each) { return (first & each.mask) == each.mark; });
    if (form == kForms.end() || form->size > bytes.size()) {
        return kNone;
    }
    char32_t code = first & ~form->mask;
    for (std::size_t at = 1; at < form->size; ++at) {
        const unsigned next = byteAt(bytes, at);
        if ((next & 0xC0U) != 0x80U) {
            return kNone;
        }
        code = (code << 6U) | (next & 0x3FU);
    }
    return (code >= form->smallest && isCode(code)) ? Character{form->size, code} : kNone;
}

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

void appendCharacter(std::string& out, const Character& character, std::string_view bytes)
{
    const auto* reference = std::ranges::find(kReferences, character.code, &Reference::code);
    if (isControl(character.code)) {
        out += kReplacement;
    } else if (reference != kReferences.end()) {
        out += reference->text;
    } else {
        out += bytes;
    }
}

} // namespace

std::size_t characterSize(std::string_view bytes)
{
    return decode(bytes).size;
}

std::string escape(std::string_view bytes)
{
    std::string out;
    while (!bytes.empty()) {
        const Character character = decode(bytes);
        if (character.size == 0) {
            out += kReplacement;
            bytes.remove_prefix(1);
        } else {
            appendCharacter(out, character, bytes.substr(0, character.size));
            bytes.remove_prefix(character.size);
        }
    }
    return out;
}

Html& Html::operator<<(Literal markup)
{
    text_ += markup.view();
    return *this;
}

Html& Html::operator<<(Text text)
{
    text_ += escape(text.bytes);
    return *this;
}

Html& Html::operator<<(const Html& part)
{
    text_ += part.text_;
    return *this;
}

Html& Html::operator<<(const Script& script)
{
    text_ += script.text();
    return *this;
}

} // namespace page
