// SPDX-License-Identifier: MIT
//
// log.h: lines for the web server's log, which takes what a CGI program writes to standard error.
#pragma once

#include <string>
#include <string_view>

namespace page {

/// Writes "vokpage: " and the text as one line.
void log(const std::string& text);

/// Foreign text for a line of the log: at most 64 bytes of it, in one line, without control
/// characters, between quotes.
[[nodiscard]] std::string quoted(std::string_view text);

} // namespace page
