// SPDX-License-Identifier: MIT
#include "client/answer.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "client/terminal_text.h"
#include "cmdsvc/protocol.h"
#include "core/bytes.h"

namespace client {
namespace {

using cmdsvc::kCodeSize;
using cmdsvc::kCountOffset;
using cmdsvc::kErrorTag;
using cmdsvc::kHeaderSize;
using cmdsvc::kWordSize;

std::uint32_t wordAt(std::string_view bytes, std::size_t offset)
{
    return core::getU32(std::span(bytes).subspan(offset).first<kWordSize>());
}

// ---- Shapes -----------------------------------------------------------------------------------

bool isEmpty(std::string_view bytes)
{
    return bytes.empty();
}

bool isWord(std::string_view bytes)
{
    return bytes.size() == kWordSize;
}

bool isError(std::string_view bytes)
{
    return bytes.size() == kErrorTag.size() + kWordSize && bytes.starts_with(kErrorTag);
}

bool isTagged(std::string_view bytes, char last)
{
    return bytes.size() >= kHeaderSize && bytes[kCodeSize] == ' ' && bytes[kHeaderSize - 1] == last;
}

bool isStatus(std::string_view bytes)
{
    return bytes.size() == kHeaderSize && isTagged(bytes, '\0');
}

bool isHeader(std::string_view bytes)
{
    return isTagged(bytes, '\n');
}

Answer readNothing(std::string_view /*bytes*/)
{
    return {};
}

Answer readWord(std::string_view bytes)
{
    Answer answer;
    answer.value = wordAt(bytes, 0);
    return answer;
}

/// An error's or a status's code, and the tag before it.
Answer readTagged(std::string_view bytes)
{
    Answer answer;
    answer.tag = bytes.substr(0, kCodeSize);
    answer.value = wordAt(bytes, kCountOffset);
    return answer;
}

Answer readHeader(std::string_view bytes)
{
    Answer answer = readTagged(bytes);
    std::string_view rest = bytes.substr(kHeaderSize);
    const std::size_t errorSize = kErrorTag.size() + kWordSize;
    if (rest.size() >= errorSize && isError(rest.substr(rest.size() - errorSize))) {
        answer.trailingError = wordAt(rest, rest.size() - kWordSize);
        rest.remove_suffix(errorSize);
    }
    while (!rest.empty()) {
        const std::size_t size = std::min(rest.find('\n'), rest.size());
        answer.lines.emplace_back(rest.substr(0, size));
        rest.remove_prefix(std::min(size + 1, rest.size()));
    }
    return answer;
}

struct ShapeRow {
    Shape shape;
    bool (*matches)(std::string_view bytes);
    Answer (*read)(std::string_view bytes);
};

/// The first shape that matches is the answer's.
constexpr std::array<ShapeRow, 5> kShapes = {{
    {Shape::kEmpty, isEmpty, readNothing},
    {Shape::kWord, isWord, readWord},
    {Shape::kError, isError, readTagged},
    {Shape::kStatus, isStatus, readTagged},
    {Shape::kHeader, isHeader, readHeader},
}};

// ---- Words ------------------------------------------------------------------------------------

struct StatusWords {
    std::uint32_t code;
    const char* words;
};

constexpr std::array<StatusWords, 8> kStatusWords = {{
    {cmdsvc::kGood, "good"},
    {cmdsvc::kWrongCount, "the command takes another number of parameters"},
    {cmdsvc::kWrongCountOfShareCommand, "the command takes another number of parameters"},
    {cmdsvc::kUserListEmpty, "the appliance's list of users is empty"},
    {cmdsvc::kCannotStat, "the appliance has no list of users"},
    {cmdsvc::kCannotRemove, "the appliance cannot remove its work file"},
    {cmdsvc::kCannotOpen, "the appliance cannot open its work file"},
    {cmdsvc::kCannotClose, "the appliance cannot close its work file"},
}};

std::string quote(std::string_view text)
{
    std::string quoted = "\"";
    quoted += makePrintable(text).text;
    quoted += '"';
    return quoted;
}

std::string describeLines(const Answer& answer)
{
    std::string text;
    for (const std::string& line : answer.lines) {
        text += "\n  " + makePrintable(line).text;
    }
    if (answer.trailingError) {
        text += "\nfollowed by an error, " + explainStatus(*answer.trailingError);
    }
    return text;
}

} // namespace

Answer readAnswer(std::string_view bytes)
{
    for (const ShapeRow& row : kShapes) {
        if (row.matches(bytes)) {
            Answer answer = row.read(bytes);
            answer.shape = row.shape;
            return answer;
        }
    }
    return {};
}

std::string explainStatus(std::uint32_t code)
{
    std::array<char, 16> number{};
    std::snprintf(number.data(), number.size(), "0x%08X", code);
    const auto* row = std::ranges::find(kStatusWords, code, &StatusWords::code);
    const std::string words = (row != kStatusWords.end()) ? row->words : "not known to this client";
    return std::string(number.data()) + ": " + words;
}

std::string describeAnswer(const Answer& answer)
{
    switch (answer.shape) {
    case Shape::kEmpty:
        return "empty: the command was ignored, is not known, or failed before it answered";
    case Shape::kWord:
        return "status " + explainStatus(answer.value);
    case Shape::kError:
        return "error " + explainStatus(answer.value);
    case Shape::kStatus:
        return quote(answer.tag) + " with status " + explainStatus(answer.value);
    case Shape::kHeader:
        return quote(answer.tag) + " with count " + std::to_string(answer.value) +
               describeLines(answer);
    case Shape::kUnreadable:
        break;
    }
    return "of no shape that this client knows";
}

std::string hexdump(std::string_view bytes)
{
    constexpr std::size_t kPerLine = 16;
    std::string out;
    for (std::size_t offset = 0; offset < bytes.size(); offset += kPerLine) {
        std::array<char, 24> text{};
        std::snprintf(text.data(), text.size(), "%08zx ", offset);
        std::string numbers = text.data();
        std::string characters;
        for (const char c : bytes.substr(offset, kPerLine)) {
            std::snprintf(text.data(), text.size(), " %02x", core::byteOf(c));
            numbers += text.data();
            characters += (c >= ' ' && c <= '~') ? c : '.';
        }
        numbers.resize(9 + 3 * kPerLine, ' ');
        out += numbers + "  |" + characters + "|\n";
    }
    return out;
}

} // namespace client
