// SPDX-License-Identifier: MIT
//
// failure.h: why a command of vokctl has failed.
#pragma once

#include <stdexcept>
#include <string>

#include "client/exit_codes.h"

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

/// Ends the command with an exit code; the output has been written already.
struct ExitWith {
    int code;
};

} // namespace client
