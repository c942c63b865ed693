// SPDX-License-Identifier: MIT
#include "service/gate.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include "cmdsvc/commands.h"
#include "cmdsvc/request_reader.h"
#include "core/bytes.h"
#include "service/shell_text.h"

namespace service {
namespace {

using cmdsvc::Command;
using cmdsvc::Layout;
using cmdsvc::Parameter;
using cmdsvc::RequestReader;
using cmdsvc::Status;

// ---- A parameter as its handler takes it ------------------------------------------------------

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

// ---- What the handlers look at when it is too late --------------------------------------------
//
// A check of the gate's own looks at the parameters as a whole, after one of them has been found
// harmless. With another count no handler sees them, and the dispatcher answers.

using Check = bool (*)(std::string_view parameters);

/// The handler traces each byte of the name with a shell line of its own before it looks at its
/// size.
bool isOfUserNameSize(std::string_view parameters)
{
    const std::string_view name = cmdsvc::textOf(parameters.substr(0, parameters.find('\n')));
    return !cmdsvc::parameter("crat", "user").isTooLong(name.size());
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

// If there was no private file before, the handler leaves what came of one that is not whole.

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

struct LateCheck {
    std::string_view command;
    std::string_view after; ///< the parameter after which it is made
    std::string_view name;  ///< what the log calls it
    Check passes;
    Status code; ///< of the answer, if it does not pass
};

constexpr auto kLateChecks = std::to_array<LateCheck>({
    {"crat", "user", "user", isOfUserNameSize, cmdsvc::kUserNameTooLong},
    {"spvt", "content", "content", hasItsContent, cmdsvc::kTooLittleSent},
    {"spvt", "content", "end mark", hasItsEndMark, cmdsvc::kNoEndMark},
});

const LateCheck* findFailedCheck(const RequestReader& reader, const Command& command,
                                 const Parameter& parameter)
{
    const char count = reader.firstLine()[cmdsvc::kCountOffset];
    if (!command.count.accepts(core::byteOf(count))) {
        return nullptr;
    }
    const auto* found = std::ranges::find_if(kLateChecks, [&](const LateCheck& check) {
        return check.command == command.code && check.after == parameter.name &&
               !check.passes(reader.parameters());
    });
    return (found != kLateChecks.end()) ? found : nullptr;
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
        if (const LateCheck* failed = findFailedCheck(reader, *command, parameter)) {
            return Refusal{failed->name, answerOf(*command, failed->code)};
        }
    }
    return std::nullopt;
}

} // namespace service
