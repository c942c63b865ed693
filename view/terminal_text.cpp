// SPDX-License-Identifier: MIT
#include "view/terminal_text.h"

#include <algorithm>
#include <array>
#include <clocale>
#include <cstdio>
#include <cwchar>
#include <optional>
#include <utility>

#include "core/bytes.h"
#include "view/utf8.h"

namespace view {
namespace {

/// Characters that are invisible but change how others are shown.
bool isInvisibleControl(char32_t value)
{
    constexpr auto kRanges = std::to_array<std::pair<char32_t, char32_t>>({
        {0x0000, 0x0000},   // to wcwidth() it is the end of a text, of no width
        {0x00AD, 0x00AD},   // soft hyphen
        {0x061C, 0x061C},   // Arabic letter mark
        {0x180E, 0x180E},   // Mongolian vowel separator
        {0x200B, 0x200F},   // zero-width characters and direction marks
        {0x2028, 0x202E},   // line and paragraph separators, direction embeddings
        {0x2060, 0x206F},   // invisible operators, direction isolates
        {0xFEFF, 0xFEFF},   // byte order mark
        {0xFFF9, 0xFFFB},   // interlinear annotation
        {0xE0000, 0xE007F}, // tags
    });
    return std::ranges::any_of(kRanges, [value](const auto& range) {
        return value >= range.first && value <= range.second;
    });
}

/// The columns that a character takes; nothing if it must not be sent to a terminal.
std::optional<std::size_t> columnsOf(char32_t value)
{
    const int columns = ::wcwidth(static_cast<wchar_t>(value));
    if (columns < 0 || isInvisibleControl(value)) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(columns);
}

std::string escape(const char* format, unsigned value)
{
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), format, value);
    return text.data();
}

void append(TerminalText& out, const std::string& ascii)
{
    out.text += ascii;
    out.columns += ascii.size();
}

void append(TerminalText& out, char32_t code, std::string_view bytes)
{
    const std::optional<std::size_t> columns = columnsOf(code);
    if (code == U'\\') {
        append(out, "\\\\");
    } else if (columns) {
        out.text += bytes;
        out.columns += *columns;
    } else {
        append(out, escape("\\u{%x}", static_cast<unsigned>(code)));
    }
}

} // namespace

TerminalText makePrintable(std::string_view text)
{
    // wcwidth() depends on the locale; this one is part of the C library.
    std::setlocale(LC_CTYPE, "C.UTF-8");

    TerminalText out;
    while (!text.empty()) {
        const std::optional<Character> character = firstCharacter(text);
        if (!character) {
            append(out, escape("\\x%02x", core::byteOf(text[0])));
            text.remove_prefix(1);
            continue;
        }
        append(out, character->code, text.substr(0, character->size));
        text.remove_prefix(character->size);
    }
    return out;
}

} // namespace view
