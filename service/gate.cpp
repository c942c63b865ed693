// SPDX-License-Identifier: MIT
#include "service/gate.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include "cmdsvc/protocol.h"
#include "core/bytes.h"
#include "service/request_reader.h"
#include "service/shell_text.h"

namespace service {
namespace {

/// The most that a line takes, in the handlers that set no limit of their own.
constexpr std::size_t kLine = VOK_REQUEST_SIZE - 1;

// ---- How a handler takes a parameter ----------------------------------------------------------

using Take = std::string_view (*)(RequestReader& reader);

/// A line without its newline, taken with a buffer of so many bytes.
template <std::size_t size> std::string_view takeLine(RequestReader& reader)
{
    const std::string_view line = textOf(reader.takeLine(size));
    return line.ends_with('\n') ? line.substr(0, line.size() - 1) : line;
}

std::string_view takeByte(RequestReader& reader)
{
    return reader.takeByte();
}

std::string_view dropFirst(std::string_view text, std::size_t size)
{
    return text.substr(std::min(size, text.size()));
}

/// gspc: behind the name's length in the first line. Of a length of 10, which ends that line, the
/// rest takes the length's place.
std::string_view takeSharesName(RequestReader& reader)
{
    const std::string_view line(reader.firstLine().data(), reader.firstLine().size());
    if (line[5] != '\n') {
        return textOf(line.substr(6));
    }
    return textOf(dropFirst(reader.takeLine(kLine), 1));
}

/// subs: in the first line, too, behind the length, a byte and the state.
std::string_view takeReportsName(RequestReader& reader)
{
    const std::string_view line(reader.firstLine().data(), reader.firstLine().size());
    if (line[5] != '\n') {
        return textOf(line.substr(8));
    }
    return textOf(dropFirst(reader.takeLine(kLine), 2));
}

/// sub1: bytes up to a newline or a zero.
std::string_view takeUsersName(RequestReader& reader)
{
    const std::string_view name = textOf(reader.rest());
    return name.substr(0, name.find('\n'));
}

/// spvt: four bytes and a newline.
std::string_view takeSize(RequestReader& reader)
{
    return reader.takeLine(kLine);
}

std::string_view takeRest(RequestReader& reader)
{
    return reader.rest();
}

/// crat and spvt: what has been taken, all of it again. With another count than 2 no handler sees
/// it, and the dispatcher answers.
std::string_view lookAtParameters(RequestReader& reader)
{
    constexpr char kCount = 2;
    const bool isCounted = reader.firstLine()[cmdsvc::kCountOffset] == kCount;
    return isCounted ? reader.parameters() : std::string_view();
}

/// crat: the name again.
std::string_view lookAtName(RequestReader& reader)
{
    const std::string_view parameters = lookAtParameters(reader);
    return textOf(parameters.substr(0, parameters.find('\n')));
}

// ---- What it may hold -------------------------------------------------------------------------

using Check = bool (*)(std::string_view parameter);

template <ShellContext context> bool fits(std::string_view parameter)
{
    return isHarmless(parameter, context);
}

/// A trace shows a size as text. One that a request can hold is two characters at most, which say
/// nothing to the shell.
bool isSize(std::string_view line)
{
    const bool isWhole = line.size() > cmdsvc::kWordSize;
    return isHarmless(textOf(line), ShellContext::kDoubleQuotes) ||
           (isWhole && core::getU32(std::span(line).first<cmdsvc::kWordSize>()) < VOK_REQUEST_SIZE);
}

/// A file's bytes are traced as far as they are text.
bool isFileContent(std::string_view bytes)
{
    return isHarmless(textOf(bytes), ShellContext::kDoubleQuotes);
}

/// A name in a line that ended early keeps what follows it.
bool isNameLine(std::string_view line)
{
    return isHarmless(line.substr(0, line.find('\n')), ShellContext::kName) &&
           line.find('\n') >= line.size() - std::min<std::size_t>(1, line.size());
}

/// Some clients escape what a shell would read; the handler drops every backslash.
bool isEscapedName(std::string_view name)
{
    std::string kept(name);
    std::erase(kept, '\\');
    return isHarmless(kept, ShellContext::kName);
}

/// A user's name of this byte would end every list of users at its place.
bool isUserName(std::string_view name)
{
    return isHarmless(name, ShellContext::kName) && name.find('\xFF') == std::string_view::npos;
}

/// The handler traces each byte with a shell line of its own before it looks at the size.
bool isOfUserNameSize(std::string_view name)
{
    return name.size() <= cmdsvc::kLongestUserName;
}

/// Where an upload's content starts; its size stands before it.
constexpr std::size_t kContentStart = cmdsvc::kWordSize + 1;

/// The size that an upload says; 0 for one that the handler refuses before it touches any file.
std::int32_t sizeOfUpload(std::string_view upload)
{
    if (upload.size() < kContentStart || upload[cmdsvc::kWordSize] != '\n') {
        return 0;
    }
    return static_cast<std::int32_t>(core::getU32(std::span(upload).first<cmdsvc::kWordSize>()));
}

// Where there was no private file before, the handler leaves what came of one that is not whole.

bool hasItsContent(std::string_view upload)
{
    const std::int32_t size = sizeOfUpload(upload);
    return size == 0 ||
           (size > 0 && static_cast<std::size_t>(size) <= upload.size() - kContentStart);
}

bool hasItsEndMark(std::string_view upload)
{
    const auto size = static_cast<std::size_t>(sizeOfUpload(upload));
    return size == 0 || upload.substr(kContentStart + size).starts_with('\n');
}

// ---- Answers to malformed parameters ----------------------------------------------------------

enum class Shape { kWord, kError, kStatus };

std::string wordBytes(std::uint32_t code)
{
    std::array<char, cmdsvc::kWordSize> bytes;
    core::putU32(bytes, code);
    return {bytes.begin(), bytes.end()};
}

std::string answerOf(Shape shape, std::string_view command, std::uint32_t code)
{
    switch (shape) {
    case Shape::kWord:
        return wordBytes(code);
    case Shape::kError:
        return std::string(cmdsvc::kErrorTag) + wordBytes(code);
    case Shape::kStatus: {
        const cmdsvc::StatusBytes status = cmdsvc::statusBytes(command, code);
        return {status.begin(), status.end()};
    }
    }
    return "";
}

// ---- The table --------------------------------------------------------------------------------

struct Parameter {
    std::string_view name;
    Take take;
    Check check;
    std::uint32_t code = 0; ///< of the answer, where it is not the row's
};

constexpr std::size_t kMostParameters = 5;

struct Row {
    std::string_view command;
    Shape shape;
    std::uint32_t code;                                ///< of the answer to malformed parameters
    std::array<Parameter, kMostParameters> parameters; ///< in the order that the handler takes them
};

// clang-format off
constexpr Check kNowhere = fits<ShellContext::kNowhere>;
constexpr Check kInDoubleQuotes = fits<ShellContext::kDoubleQuotes>;
constexpr Check kInSingleQuotes = fits<ShellContext::kSingleQuotes>;
constexpr Check kName = fits<ShellContext::kName>;
constexpr Check kWord = fits<ShellContext::kWord>;
constexpr Check kClock = fits<ShellContext::kClock>;

/// Every command that takes parameters.
constexpr auto kTable = std::to_array<Row>({
    {"crat", Shape::kWord, cmdsvc::kMalformed, {{
        {"user", takeLine<kLine>, isUserName},
        {"user", lookAtName, isOfUserNameSize, cmdsvc::kUserNameTooLong},
        {"password", takeLine<kLine>, kInSingleQuotes}}}},
    {"getv", Shape::kError, cmdsvc::kRemoteFailed, {{
        {"key", takeRest, kNowhere}}}},
    {"gsp1", Shape::kWord, cmdsvc::kBadShareName, {{
        {"share", takeLine<kLine>, kInDoubleQuotes}}}},
    {"gspc", Shape::kStatus, cmdsvc::kSharePropertyUnknown, {{
        {"share", takeSharesName, kInDoubleQuotes}}}},
    {"host", Shape::kWord, cmdsvc::kMalformed, {{
        {"time", takeLine<kLine>, kClock},
        {"host name", takeLine<kLine>, kWord},
        {"work group", takeLine<kLine>, kWord},
        {"language", takeLine<kLine>, kWord}}}},
    {"pshr", Shape::kWord, cmdsvc::kMalformed, {{
        {"guest", takeLine<kLine>, kName},
        {"share", takeLine<kLine>, kName}}}},
    {"shar", Shape::kWord, cmdsvc::kMalformed, {{
        {"user", takeLine<kLine>, kName},
        {"share", takeLine<kLine>, kName}}}},
    {"spvt", Shape::kWord, cmdsvc::kMalformed, {{
        {"size", takeSize, isSize},
        {"content", takeRest, isFileContent},
        {"content", lookAtParameters, hasItsContent, cmdsvc::kTooLittleSent},
        {"end mark", lookAtParameters, hasItsEndMark, cmdsvc::kNoEndMark}}}},
    {"sub1", Shape::kWord, cmdsvc::kMalformed, {{
        {"state", takeByte, kNowhere},
        {"byte behind it", takeByte, kNowhere},
        {"user", takeUsersName, isEscapedName}}}},
    {"subs", Shape::kStatus, cmdsvc::kMalformed, {{
        {"user", takeReportsName, isNameLine}}}},
    {"wags", Shape::kError, cmdsvc::kRemoteBadRequest, {{
        {"entity", takeLine<256>, kInDoubleQuotes},
        {"user", takeLine<256>, kName}}}},
    {"wall", Shape::kError, cmdsvc::kMalformed, {{
        {"user", takeLine<256>, kNowhere},
        {"password", takeLine<256>, kNowhere}}}},
    {"warp", Shape::kError, cmdsvc::kRemoteFailed, {{
        {"user", takeLine<255>, kNowhere},
        {"first value", takeLine<255>, kNowhere},
        {"second value", takeLine<255>, kNowhere}}}},
    {"wasu", Shape::kError, cmdsvc::kRemoteFailed, {{
        {"user", takeLine<256>, kName},
        {"first value", takeLine<256>, kInDoubleQuotes},
        {"second value", takeLine<256>, kNowhere},
        {"switch", takeByte, kNowhere}}}},
});
// clang-format on

} // namespace

std::optional<Refusal> examine(std::string_view request)
{
    RequestReader reader(request);
    const std::string_view command(reader.firstLine().data(), cmdsvc::kCodeSize);
    const auto row = std::ranges::find(kTable, command, &Row::command);
    if (row == kTable.end()) {
        return std::nullopt;
    }
    for (const Parameter& parameter : row->parameters) {
        if (parameter.take != nullptr && !parameter.check(parameter.take(reader))) {
            const std::uint32_t code = (parameter.code != 0) ? parameter.code : row->code;
            return Refusal{parameter.name, answerOf(row->shape, row->command, code)};
        }
    }
    return std::nullopt;
}

} // namespace service
