// SPDX-License-Identifier: MIT
//
// shell_text.h: where a text meets a shell, and which texts can stand there without saying anything
// to it. The module hands texts to the shell as they stand.
#pragma once

#include <string_view>

namespace service {

/// Where a parameter's text ends up. In every context but the first it may be traced, too, which
/// puts it between double quotes.
enum class ShellContext {
    kNowhere,      ///< no shell ever sees it
    kDoubleQuotes, ///< between double quotes
    kSingleQuotes, ///< between single quotes
    kName, ///< in all of them: between single quotes, between double ones and, where those are
           ///< traced, outside of them; and in a file name
    kWord, ///< without quotes, as an argument
    kClock ///< the same, of a time
};

/// Whether a text means nothing but itself to the shell in this context.
[[nodiscard]] bool isHarmless(std::string_view text, ShellContext context);

} // namespace service
