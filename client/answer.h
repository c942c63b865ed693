// SPDX-License-Identifier: MIT
//
// answer.h: what the bytes of an answer mean. Whoever reads one knows which command it answers; the
// command's row says which shapes it can have. Values in, values out.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cmdsvc/commands.h"

namespace client {

enum class Verdict {
    kGood,       ///< the good answer of the command
    kRefused,    ///< a status code that says why not
    kNotServed,  ///< a status code of the service's own; the command has not answered
    kEmpty,      ///< nothing, although the command has a good answer
    kUnreadable, ///< bytes that the command never answers
};

struct Answer {
    Verdict verdict = Verdict::kUnreadable;
    cmdsvc::Status status = cmdsvc::kGood; ///< the status code, if the answer is one
    std::uint32_t count = 0;               ///< of a header
    std::string body = {};                 ///< what follows a header or a tag
};

/// Reads an answer to a command.
[[nodiscard]] Answer readAnswer(const cmdsvc::Command& command, std::string_view bytes);

/// Reads a status of the service's own. It can come instead of any answer.
[[nodiscard]] std::optional<cmdsvc::Status> readServiceStatus(std::string_view bytes);

/// Lines of text, without their newlines, and the error that can follow them.
struct TextLines {
    std::vector<std::string> lines;
    std::optional<cmdsvc::Status> error;
};

/// Reads the body of a header as text. Lines end in a newline and no status code holds one, so what
/// follows the last newline is an error if it looks like one.
[[nodiscard]] TextLines readLines(const cmdsvc::Command& command, std::string_view body);

/// An answer to a command in words.
[[nodiscard]] std::string describeAnswer(const cmdsvc::Command& command, const Answer& answer);

/// A status of the service's own in words.
[[nodiscard]] std::string describeServiceStatus(cmdsvc::Status status);

/// The bytes of an answer, sixteen a line, by number and by character.
[[nodiscard]] std::string hexdump(std::string_view bytes);

} // namespace client
