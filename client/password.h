// SPDX-License-Identifier: MIT
//
// password.h: passwords come from a prompt that does not echo them, or from standard input; never
// from the command line.
#pragma once

#include <string>

namespace client {

/// Asks at a terminal, otherwise takes the first line of standard input.
[[nodiscard]] std::string readPassword();

/// The same, asking twice at a terminal, so that nobody locks themselves out by a slip.
[[nodiscard]] std::string readNewPassword();

} // namespace client
