// SPDX-License-Identifier: MIT
//
// shell_text.h: where a text meets a shell, and which texts can stand there without saying anything
// to it. The module hands texts to the shell as they stand.
#pragma once

#include <string_view>

#include "cmdsvc/commands.h"

namespace service {

/// Whether a parameter's text means nothing but itself to the shell in its context. A size is a
/// line with its bytes; all other parameters have no zero byte.
[[nodiscard]] bool isHarmless(std::string_view text, cmdsvc::ShellContext context);

} // namespace service
