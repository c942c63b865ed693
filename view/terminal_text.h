// SPDX-License-Identifier: MIT
//
// terminal_text.h: makes text from the appliance's disks safe for a terminal. A share's name may be
// any bytes; it must not move the cursor, change colours, or change the order of the rest of the
// line.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace view {

/// Text that is safe to print, and the columns that it takes.
struct TerminalText {
    std::string text;
    std::size_t columns = 0;
};

/// Keeps printable UTF-8. A control character, a bidirectional control or another invisible one
/// becomes \u{HEX}, a byte that is not UTF-8 becomes \xHH, and a backslash is doubled, so different
/// texts are always shown differently.
[[nodiscard]] TerminalText makePrintable(std::string_view text);

} // namespace view
