// SPDX-License-Identifier: MIT
//
// terminal_text.h: text from the appliance's disks, made fit for a terminal. Names are whatever
// somebody managed to call a share; none of them may move the cursor, recolour the screen or change
// the order in which the rest of the line reads.
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
/// becomes \u{HEX}, a byte that is no UTF-8 becomes \xHH, and a backslash is doubled, so that what
/// is shown has one meaning.
[[nodiscard]] TerminalText makePrintable(std::string_view text);

} // namespace view
