// SPDX-License-Identifier: MIT
//
// answer.h: reads the bytes of an answer. The row of the command says which shapes the answer can
// have. These functions only compute on values.
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
    kRefused,    ///< a status code of the command that refuses
    kNotServed,  ///< a status code of the service; the command has not answered
    kEmpty,      ///< no bytes, although the command has a good answer
    kUnreadable, ///< bytes that are no answer of the command
};

struct Answer {
    Verdict verdict = Verdict::kUnreadable;
    cmdsvc::Status status = cmdsvc::kGood; ///< the status code, if the answer is one
    std::uint32_t count = 0;               ///< of a header
    std::string body = {};                 ///< the bytes after a header or a tag
};

/// Reads an answer to a command.
[[nodiscard]] Answer readAnswer(const cmdsvc::Command& command, std::string_view bytes);

/// Reads a status of the service, which can come instead of any answer.
[[nodiscard]] std::optional<cmdsvc::Status> readServiceStatus(std::string_view bytes);

/// Lines of text, without their newlines, and the error that can follow them.
struct TextLines {
    std::vector<std::string> lines;
    std::optional<cmdsvc::Status> error;
};

/// Reads the body of a header as text. Each line ends in a newline, and no status code contains
/// one, so the bytes after the last newline can be an error.
[[nodiscard]] TextLines readLines(const cmdsvc::Command& command, std::string_view body);

/// Describes an answer to a command.
[[nodiscard]] std::string describeAnswer(const cmdsvc::Command& command, const Answer& answer);

/// Describes a status of the service.
[[nodiscard]] std::string describeServiceStatus(cmdsvc::Status status);

/// The bytes of an answer, sixteen per line, as numbers and as characters.
[[nodiscard]] std::string hexdump(std::string_view bytes);

} // namespace client
