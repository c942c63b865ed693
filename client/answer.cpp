// SPDX-License-Identifier: MIT
#include "client/answer.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "core/bytes.h"
#include "text/translation.h"
#include "view/sentences.h"
#include "view/terminal_text.h"

namespace client {
namespace {

using cmdsvc::AnswerShape;
using cmdsvc::Command;
using cmdsvc::kCodeSize;
using cmdsvc::kCountOffset;
using cmdsvc::kErrorTag;
using cmdsvc::kHeaderSize;
using cmdsvc::kWordSize;
using cmdsvc::RefusalShape;
using cmdsvc::Status;
using text::fill;
using text::tr;

// ---- Shapes -----------------------------------------------------------------------------------

Status statusAt(std::string_view bytes, std::size_t offset)
{
    return Status{core::u32At(bytes, offset)};
}

bool isWord(std::string_view bytes)
{
    return bytes.size() == kWordSize;
}

bool isError(std::string_view bytes)
{
    return bytes.size() == kErrorTag.size() + kWordSize && bytes.starts_with(kErrorTag);
}

/// Whether the bytes are a status. Other bytes can begin with the same name, but no status code
/// contains a newline.
bool isStatus(std::string_view code, std::string_view bytes)
{
    return bytes.size() == kHeaderSize && bytes.starts_with(code) && bytes[kCodeSize] == ' ' &&
           bytes.back() == '\0' && bytes.find('\n') == std::string_view::npos;
}

bool isHeader(std::string_view tag, std::string_view bytes)
{
    return bytes.size() >= kHeaderSize && bytes.starts_with(tag) && bytes[kCodeSize] == ' ' &&
           bytes[kHeaderSize - 1] == '\n';
}

// ---- A command's answers ----------------------------------------------------------------------

using MaybeAnswer = std::optional<Answer>;

Answer refusal(Status status)
{
    return {.verdict = Verdict::kRefused, .status = status};
}

/// The status code of an answer that is only a status code.
Answer judge(const Command& command, Status status)
{
    const bool isGood = status == command.answer.code;
    return {.verdict = isGood ? Verdict::kGood : Verdict::kRefused, .status = status};
}

/// Whether a command whose good answer is not a word may answer this word.
bool refusesByWord(const Command& command, Status status)
{
    const cmdsvc::Refusals& refusals = command.refusals;
    return refusals.shape == RefusalShape::kAsWord ||
           (refusals.malformedShape == RefusalShape::kAsWord && status == refusals.malformed) ||
           (command.count.isChecked && status == command.wrongCountCode);
}

MaybeAnswer readWord(const Command& command, std::string_view bytes)
{
    if (!isWord(bytes)) {
        return std::nullopt;
    }
    const Status status = statusAt(bytes, 0);
    if (command.answer.shape == AnswerShape::kWord) {
        return judge(command, status);
    }
    return refusesByWord(command, status) ? MaybeAnswer(refusal(status)) : std::nullopt;
}

MaybeAnswer readError(const Command& command, std::string_view bytes)
{
    if (command.refusals.shape != RefusalShape::kAsError || !isError(bytes)) {
        return std::nullopt;
    }
    return refusal(statusAt(bytes, kErrorTag.size()));
}

/// Takes the first of two statuses: if a report could not be stored, "subs" answers an error and
/// then a good status.
std::string_view firstStatus(const Command& command, std::string_view bytes)
{
    const bool isPair = command.answer.shape == AnswerShape::kStatus &&
                        bytes.size() == 2 * kHeaderSize &&
                        isStatus(command.code, bytes.substr(kHeaderSize));
    return isPair ? bytes.substr(0, kHeaderSize) : bytes;
}

MaybeAnswer readStatus(const Command& command, std::string_view bytes)
{
    const std::string_view first = firstStatus(command, bytes);
    if (!isStatus(command.code, first)) {
        return std::nullopt;
    }
    const Status status = statusAt(first, kCountOffset);
    if (command.answer.shape == AnswerShape::kStatus) {
        return judge(command, status);
    }
    const bool isRefusal = command.refusals.shape == RefusalShape::kAsStatus;
    return isRefusal ? MaybeAnswer(refusal(status)) : std::nullopt;
}

MaybeAnswer readHeader(const Command& command, std::string_view bytes)
{
    if (command.answer.shape != AnswerShape::kHeader || !isHeader(command.answer.tag, bytes)) {
        return std::nullopt;
    }
    return Answer{.verdict = Verdict::kGood,
                  .count = core::u32At(bytes, kCountOffset),
                  .body = std::string(bytes.substr(kHeaderSize))};
}

MaybeAnswer readBytes(const Command& command, std::string_view bytes)
{
    const std::string_view tag = command.answer.tag;
    if (command.answer.shape != AnswerShape::kBytes || !bytes.starts_with(tag)) {
        return std::nullopt;
    }
    return Answer{.verdict = Verdict::kGood, .body = std::string(bytes.substr(tag.size()))};
}

Answer readNothing(const Command& command)
{
    const bool isGood = command.answer.shape == AnswerShape::kNone;
    return {.verdict = isGood ? Verdict::kGood : Verdict::kEmpty};
}

/// Only bytes of "gspc" can fit two shapes: there the status is tried first.
constexpr auto kReaders = std::to_array({readWord, readError, readStatus, readHeader, readBytes});

std::vector<std::string> splitLines(std::string_view text)
{
    std::vector<std::string> lines;
    while (!text.empty()) {
        const std::size_t size = std::min(text.find('\n'), text.size());
        lines.emplace_back(text.substr(0, size));
        text.remove_prefix(std::min(size + 1, text.size()));
    }
    return lines;
}

// ---- Descriptions -----------------------------------------------------------------------------

std::string quote(std::string_view text)
{
    return "\"" + std::string(text) + "\"";
}

std::string describeLines(const std::vector<std::string>& lines)
{
    std::string text;
    for (const std::string& line : lines) {
        text += "\n  " + view::makePrintable(line).text;
    }
    return text;
}

std::string describeHeader(const Command& command, const Answer& answer)
{
    const TextLines body = readLines(command, answer.body);
    std::string words =
        fill(tr("{1} with count {2}"), {quote(command.answer.tag), std::to_string(answer.count)}) +
        describeLines(body.lines);
    if (body.error) {
        words += "\n" + fill(tr("followed by an error, {}"),
                             {view::explainStatus(command.code, *body.error)});
    }
    return words;
}

std::string describeGood(const Command& command, const Answer& answer)
{
    switch (command.answer.shape) {
    case AnswerShape::kNone:
        return tr("empty, as always for this command");
    case AnswerShape::kWord:
    case AnswerShape::kStatus:
        return fill(tr("status {}"), {view::explainStatus(command.code, answer.status)});
    case AnswerShape::kHeader:
        return describeHeader(command, answer);
    case AnswerShape::kBytes:
        break;
    }
    const std::vector<std::string> lines = splitLines(answer.body);
    const std::string tag = quote(command.answer.tag.substr(0, kCodeSize));
    return lines.empty() ? fill(tr("{} and nothing more"), {tag})
                         : fill(tr("{} and"), {tag}) + describeLines(lines);
}

} // namespace

Answer readAnswer(const Command& command, std::string_view bytes)
{
    if (bytes.empty()) {
        return readNothing(command);
    }
    if (const std::optional<Status> status = readServiceStatus(bytes)) {
        return {.verdict = Verdict::kNotServed, .status = *status};
    }
    for (const auto& read : kReaders) {
        if (MaybeAnswer answer = read(command, bytes)) {
            return *std::move(answer);
        }
    }
    return {};
}

std::optional<Status> readServiceStatus(std::string_view bytes)
{
    if (!isStatus(cmdsvc::kServiceCode, bytes)) {
        return std::nullopt;
    }
    return statusAt(bytes, kCountOffset);
}

TextLines readLines(const Command& command, std::string_view body)
{
    const std::string_view end = body.substr(body.rfind('\n') + 1);
    const MaybeAnswer error = readError(command, end);
    if (!error) {
        return {splitLines(body), std::nullopt};
    }
    return {splitLines(body.substr(0, body.size() - end.size())), error->status};
}

std::string describeAnswer(const Command& command, const Answer& answer)
{
    switch (answer.verdict) {
    case Verdict::kGood:
        return describeGood(command, answer);
    case Verdict::kRefused:
        return fill(tr("a refusal, {}"), {view::explainStatus(command.code, answer.status)});
    case Verdict::kNotServed:
        return describeServiceStatus(answer.status);
    case Verdict::kEmpty:
        return tr("empty: the command was ignored, is not known, or failed before it answered");
    case Verdict::kUnreadable:
        break;
    }
    return tr("of a shape that this client does not know");
}

std::string describeServiceStatus(Status status)
{
    return fill(tr("a status of the service, {}"),
                {view::explainStatus(cmdsvc::kServiceCode, status)});
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
        out.append(numbers).append("  |").append(characters).append("|\n");
    }
    return out;
}

} // namespace client
