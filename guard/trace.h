// SPDX-License-Identifier: MIT
//
// trace.h: lines that trace. They need no shell, and their texts are to reach none.
#pragma once

#include <optional>
#include <string_view>

namespace guard {

struct Trace {
    std::string_view text;
    bool isFirst; ///< of its process: it empties the file
};

/// What a line traces; nothing of any other line. Whatever stands between the first quote and the
/// last is the text, quotes included.
[[nodiscard]] std::optional<Trace> readTrace(std::string_view line);

/// Writes the text and a newline to /tmp/dbg_vokcontrol.txt in one piece. A file that is not there
/// is made as a shell makes it, with mode 0666 less the umask.
/// @return as system() does for a shell whose echo prints the text as it stands: 0; an exit with 2
///         where the file cannot be opened, with 1 where it cannot take all of the text
int writeTrace(const Trace& trace);

} // namespace guard
