// SPDX-License-Identifier: MIT
//
// failure.h: why a command of vokctl ends without doing what it was asked for.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "client/exit_codes.h"
#include "cmdsvc/protocol.h"

namespace client {

/// Ends the command: the sentence goes to standard error, and the code is vokctl's exit code.
class Failure : public std::runtime_error {
  public:
    Failure(ExitCode code, const std::string& sentence) : std::runtime_error(sentence), code_(code)
    {}

    [[nodiscard]] ExitCode code() const { return code_; }

  private:
    ExitCode code_;
};

/// A status code instead of a good answer: a command's own refusal (kRefused), or that of the
/// service itself. Whoever asked may know more to say about it.
class Refused : public Failure {
  public:
    /// @param command  a code of cmdsvc/commands.h, or cmdsvc::kServiceCode
    Refused(ExitCode exitCode, std::string_view command, cmdsvc::Status status,
            const std::string& sentence)
        : Failure(exitCode, sentence), command_(command), status_(status)
    {}

    [[nodiscard]] std::string_view command() const { return command_; }
    [[nodiscard]] cmdsvc::Status status() const { return status_; }

  private:
    std::string_view command_;
    cmdsvc::Status status_;
};

/// Ends the command with a code of its own: all that there is to say went to standard output.
struct ExitWith {
    int code;
};

} // namespace client
