// SPDX-License-Identifier: MIT
//
// shell_text.h: which texts are safe in a shell line. The module puts texts into shell lines
// unchanged.
#pragma once

#include <string_view>

#include "cmdsvc/commands.h"

namespace service {

/// Whether the shell reads a parameter's text, in its place in the line, as this text and nothing
/// else. The text of a size is a line with the size's bytes; all other texts have no zero byte.
[[nodiscard]] bool isHarmless(std::string_view text, cmdsvc::ShellContext context);

} // namespace service
