// SPDX-License-Identifier: MIT
//
// failure.h: why a command of vokctl ends without doing what it was asked for.
#pragma once

#include <stdexcept>
#include <string>

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

/// The command has answered a status code that refuses; whoever asked may know what it is about.
class Refused : public Failure {
  public:
    Refused(cmdsvc::Status status, const std::string& sentence)
        : Failure(kRefused, sentence), status_(status)
    {}

    [[nodiscard]] cmdsvc::Status status() const { return status_; }

  private:
    cmdsvc::Status status_;
};

/// Ends the command with a code of its own: all that there is to say went to standard output.
struct ExitWith {
    int code;
};

} // namespace client
