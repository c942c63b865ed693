// SPDX-License-Identifier: MIT
//
// trace.h: shell lines that trace. They need no shell, and their texts must not reach one.
#pragma once

#include <optional>
#include <string_view>

namespace guard {

struct Trace {
    std::string_view text;
    bool isFirst; ///< the process's first trace, which empties the file
};

/// The trace of a line; nothing if the line is no trace. The text is everything between the first
/// quote and the last, quotes included.
[[nodiscard]] std::optional<Trace> readTrace(std::string_view line);

/// Writes the text and a newline to /tmp/dbg_vokcontrol.txt in one piece. Creates a missing file as
/// a shell does, with mode 0666 less the umask.
/// @return like system() for a shell's echo: 0; an exit with 2 if the file cannot be opened, with 1
///         if the text cannot be written whole
int writeTrace(const Trace& trace);

} // namespace guard
