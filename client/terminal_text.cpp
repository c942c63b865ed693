// SPDX-License-Identifier: MIT
#include "client/terminal_text.h"

#include <array>
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cwchar>
#include <optional>
#include <utility>

namespace client {
namespace {

struct CodePoint {
    char32_t value;
    std::size_t size;
};

std::uint8_t byteAt(std::string_view text, std::size_t index)
{
    return static_cast<std::uint8_t>(text[index]);
}

/// The size of the sequence that a lead byte announces, its payload bits, and the smallest value
/// that needs such a size (a longer way of writing a smaller one is no UTF-8).
struct LeadByte {
    std::size_t size;
    char32_t bits;
    char32_t smallest;
};

std::optional<LeadByte> readLead(std::uint8_t lead)
{
    if (lead < 0x80U) {
        return LeadByte{1, lead, 0};
    }
    if ((lead & 0xE0U) == 0xC0U) {
        return LeadByte{2, lead & 0x1FU, 0x80};
    }
    if ((lead & 0xF0U) == 0xE0U) {
        return LeadByte{3, lead & 0x0FU, 0x800};
    }
    if ((lead & 0xF8U) == 0xF0U) {
        return LeadByte{4, lead & 0x07U, 0x10000};
    }
    return std::nullopt;
}

/// The character that a text starts with; nothing where its first byte starts none.
std::optional<CodePoint> decodeFirst(std::string_view text)
{
    const std::optional<LeadByte> lead = readLead(byteAt(text, 0));
    if (!lead || lead->size > text.size()) {
        return std::nullopt;
    }
    char32_t value = lead->bits;
    for (std::size_t i = 1; i < lead->size; ++i) {
        const std::uint8_t next = byteAt(text, i);
        if ((next & 0xC0U) != 0x80U) {
            return std::nullopt;
        }
        value = (value << 6U) | (next & 0x3FU);
    }
    const bool isSurrogate = value >= 0xD800 && value <= 0xDFFF;
    if (value < lead->smallest || value > 0x10FFFF || isSurrogate) {
        return std::nullopt;
    }
    return CodePoint{value, lead->size};
}

/// Characters that take no place of their own but change how others are shown.
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
    for (const auto& [first, last] : kRanges) {
        if (value >= first && value <= last) {
            return true;
        }
    }
    return false;
}

/// The columns that a character takes; nothing where it must not reach a terminal.
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

} // namespace

TerminalText makePrintable(std::string_view text)
{
    // wcwidth() knows characters by locale; this one is part of the C library.
    std::setlocale(LC_CTYPE, "C.UTF-8");

    TerminalText out;
    while (!text.empty()) {
        const std::optional<CodePoint> point = decodeFirst(text);
        if (!point) {
            append(out, escape("\\x%02x", byteAt(text, 0)));
            text.remove_prefix(1);
            continue;
        }
        const std::optional<std::size_t> columns = columnsOf(point->value);
        if (point->value == U'\\') {
            append(out, "\\\\");
        } else if (columns) {
            out.text += text.substr(0, point->size);
            out.columns += *columns;
        } else {
            append(out, escape("\\u{%x}", static_cast<unsigned>(point->value)));
        }
        text.remove_prefix(point->size);
    }
    return out;
}

bool isUtf8(std::string_view text)
{
    while (!text.empty()) {
        const std::optional<CodePoint> point = decodeFirst(text);
        if (!point) {
            return false;
        }
        text.remove_prefix(point->size);
    }
    return true;
}

} // namespace client
