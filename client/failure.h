// SPDX-License-Identifier: MIT
//
// failure.h: why a command of vokctl has failed.
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

/// A status code instead of a good answer: a refusal of the command (kRefused) or of the service.
/// The caller may know a better sentence for it.
class Refused : public Failure {
  public:
    /// @param command  a code of cmdsvc/commands.h, or cmdsvc::kServiceCode
    /// @param reasons  what the appliance's programs wrote to standard error
    Refused(ExitCode exitCode, std::string_view command, cmdsvc::Status status,
            const std::string& sentence, std::string reasons = {})
        : Failure(exitCode, sentence),
          command_(command),
          status_(status),
          reasons_(std::move(reasons))
    {}

    [[nodiscard]] std::string_view command() const { return command_; }
    [[nodiscard]] cmdsvc::Status status() const { return status_; }
    [[nodiscard]] const std::string& reasons() const { return reasons_; }

  private:
    std::string_view command_;
    cmdsvc::Status status_;
    std::string reasons_;
};

/// Ends the command with an exit code; the output has been written already.
struct ExitWith {
    int code;
};

} // namespace client
