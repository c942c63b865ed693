// SPDX-License-Identifier: MIT
#include "service/gate.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include "cmdsvc/commands.h"
#include "cmdsvc/request_reader.h"
#include "core/bytes.h"
#include "service/new_name.h"
#include "service/shell_text.h"

namespace service {
namespace {

using cmdsvc::Command;
using cmdsvc::Layout;
using cmdsvc::Parameter;
using cmdsvc::RequestReader;
using cmdsvc::Status;

// ---- Parameters, taken in the same way as their handlers do -----------------------------------

/// A parameter of text ends at its first zero byte.
std::string_view take(RequestReader& reader, const Parameter& parameter)
{
    switch (parameter.layout) {
    case Layout::kLine:
        return cmdsvc::withoutNewline(cmdsvc::textOf(reader.takeLine(parameter.room)));
    case Layout::kNumber:
        return reader.takeBytes(cmdsvc::kWordSize + 1);
    case Layout::kNumberLine:
        return reader.takeLine(cmdsvc::kLineRoom);
    case Layout::kByte:
        return reader.takeBytes(1);
    case Layout::kText:
        return reader.takeText();
    case Layout::kRest:
        return cmdsvc::textOf(reader.rest());
    case Layout::kInFirstLine:
        return cmdsvc::textOf(reader.completeFirstLine(parameter).substr(parameter.offset));
    }
    return {};
}

// ---- What the handlers check too late ---------------------------------------------------------
//
// A late check gets all parameters, after one of them has been found harmless. It is not made if
// the count is wrong: then the dispatcher answers, and no handler runs.

/// @return kGood, or the code that refuses the request
using Check = Status (*)(std::string_view parameters);

/// The line with this number among the parameters; the first has the number 0.
std::string_view lineOf(std::string_view parameters, int number)
{
    for (; number > 0; --number) {
        const std::size_t end = parameters.find('\n');
        parameters = (end == std::string_view::npos) ? "" : parameters.substr(end + 1);
    }
    return cmdsvc::textOf(parameters.substr(0, parameters.find('\n')));
}

/// The code that answers a new name. Only new names are judged: a user or share that has such a
/// name already can still be removed.
Status answerTo(NewName verdict, Status reserved)
{
    switch (verdict) {
    case NewName::kMisread:
        return cmdsvc::kMalformed;
    case NewName::kReserved:
        return reserved;
    case NewName::kGood:
        break;
    }
    return cmdsvc::kGood;
}

/// The handler traces each byte of the name, with one shell line each, before it checks the length.
Status checkUser(std::string_view parameters)
{
    const std::string_view name = lineOf(parameters, 0);
    return cmdsvc::parameter("crat", "user").isTooLong(name.size())
               ? cmdsvc::kUserNameTooLong
               : answerTo(judgeNewUser(name), cmdsvc::kUserNameTaken);
}

/// The share's name follows a line "guest". Without that line, the handler cuts off the name's last
/// character.
Status checkPublicShare(std::string_view parameters)
{
    const std::string_view first = lineOf(parameters, 0);
    const std::string_view alone = first.substr(0, std::max<std::size_t>(first.size(), 1) - 1);
    const std::string_view name = (first == "guest") ? lineOf(parameters, 1) : alone;
    return answerTo(judgeNewShare(name), cmdsvc::kShareNameTaken);
}

Status checkPrivateShare(std::string_view parameters)
{
    return answerTo(judgeNewShare(lineOf(parameters, 1)), cmdsvc::kShareNameTaken);
}

/// An upload begins with its size and a newline; its content starts here.
constexpr std::size_t kContentStart = cmdsvc::kWordSize + 1;

/// The size in an upload; 0 for one that the handler refuses before it touches any file.
std::int32_t sizeOfUpload(std::string_view upload)
{
    if (upload.size() < kContentStart || upload[cmdsvc::kWordSize] != '\n') {
        return 0;
    }
    return static_cast<std::int32_t>(core::getU32(std::span(upload).first<cmdsvc::kWordSize>()));
}

// If there was no private file before, the handler keeps the incomplete content as the new file.

Status checkContent(std::string_view upload)
{
    const std::int32_t size = sizeOfUpload(upload);
    const bool isThere =
        size == 0 || (size > 0 && static_cast<std::size_t>(size) <= upload.size() - kContentStart);
    return isThere ? cmdsvc::kGood : cmdsvc::kTooLittleSent;
}

Status checkEndMark(std::string_view upload)
{
    const auto size = static_cast<std::size_t>(sizeOfUpload(upload));
    const bool isThere = size == 0 || upload.substr(kContentStart + size).starts_with('\n');
    return isThere ? cmdsvc::kGood : cmdsvc::kNoEndMark;
}

struct LateCheck {
    std::string_view command;
    std::string_view after; ///< the parameter after which it is made
    std::string_view name;  ///< the name in the log
    Check check;
};

constexpr auto kLateChecks = std::to_array<LateCheck>({
    {"crat", "user", "user", checkUser},
    {"pshr", "share", "share", checkPublicShare},
    {"shar", "share", "share", checkPrivateShare},
    {"spvt", "content", "content", checkContent},
    {"spvt", "content", "end mark", checkEndMark},
});

/// A late check that has refused a request, and the code of the answer.
struct Failed {
    std::string_view name;
    Status code;
};

std::optional<Failed> findFailedCheck(const RequestReader& reader, const Command& command,
                                      const Parameter& parameter)
{
    const char count = reader.firstLine()[cmdsvc::kCountOffset];
    if (!command.count.accepts(core::byteOf(count))) {
        return std::nullopt;
    }
    for (const LateCheck& each : kLateChecks) {
        if (each.command == command.code && each.after == parameter.name) {
            const Status code = each.check(reader.parameters());
            if (code != cmdsvc::kGood) {
                return Failed{each.name, code};
            }
        }
    }
    return std::nullopt;
}

// ---- Answers to malformed parameters ----------------------------------------------------------

std::string wordBytes(Status code)
{
    const auto bytes = core::u32Bytes(cmdsvc::wordOf(code));
    return {bytes.begin(), bytes.end()};
}

std::string answerOf(const Command& command, Status code)
{
    switch (command.refusals.malformedShape) {
    case cmdsvc::RefusalShape::kAsWord:
        return wordBytes(code);
    case cmdsvc::RefusalShape::kAsError:
        return std::string(cmdsvc::kErrorTag) + wordBytes(code);
    case cmdsvc::RefusalShape::kAsStatus: {
        const cmdsvc::StatusBytes status = cmdsvc::statusBytes(command.code, code);
        return {status.begin(), status.end()};
    }
    case cmdsvc::RefusalShape::kNeverRefuses:
        break;
    }
    return "";
}

} // namespace

std::optional<Refusal> examine(std::string_view request)
{
    const cmdsvc::RequestBuffer buffer = cmdsvc::bufferOf(request);
    RequestReader reader(buffer);
    const Command* command = cmdsvc::findCommand(cmdsvc::codeOf(reader.firstLine()));
    if (command == nullptr) {
        return std::nullopt;
    }
    for (const Parameter& parameter : command->parameters) {
        if (!isHarmless(take(reader, parameter), parameter.context)) {
            return Refusal{parameter.name, answerOf(*command, command->refusals.malformed)};
        }
        if (const std::optional<Failed> failed = findFailedCheck(reader, *command, parameter)) {
            return Refusal{failed->name, answerOf(*command, failed->code)};
        }
    }
    return std::nullopt;
}

} // namespace service
