// SPDX-License-Identifier: MIT
//
// password.h: passwords come from a prompt that does not echo them, or from standard input; never
// from the command line.
#pragma once

#include <string>

namespace client {

/// Asks for it on a terminal; otherwise returns the first line of standard input.
[[nodiscard]] std::string readPassword();

/// The same, but asks twice on a terminal, because a mistyped password would lock the user out.
[[nodiscard]] std::string readNewPassword();

} // namespace client
