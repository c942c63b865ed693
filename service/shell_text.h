// SPDX-License-Identifier: MIT
//
// shell_text.h: where a text meets a shell, and which texts can stand there without saying anything
// to it. The module hands texts to the shell as they stand.
#pragma once

#include <string_view>

#include "cmdsvc/commands.h"

namespace service {

/// Whether a parameter means nothing but itself to the shell in its context. It is looked at as C
/// functions see it, up to its first zero byte.
[[nodiscard]] bool isHarmless(std::string_view parameter, cmdsvc::ShellContext context);

} // namespace service
