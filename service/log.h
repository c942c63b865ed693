// SPDX-License-Identifier: MIT
//
// log.h: one line a request on standard error. Parameters are people's names and passwords, so no
// line ever holds one.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "service/child.h"
#include "service/peer.h"

namespace service {

/// "12 lstu count=0 answer=25 ms=31", and what went wrong behind it. A code that is not made of
/// four letters and digits is shown as its bytes, "0x" and hexadecimal digits.
[[nodiscard]] std::string describe(int number, std::string_view request, const Outcome& outcome,
                                   std::chrono::milliseconds taken);

/// The command of a request as log lines have it.
[[nodiscard]] std::string describeCommand(std::string_view request);

/// "uid=1000 pid=4711"; question marks for a peer that the kernel does not tell.
[[nodiscard]] std::string describe(const std::optional<Peer>& peer);

/// Writes a line to standard error in one piece.
void log(const std::string& line);

/// The same for a line about a client: it begins with who that is.
void log(const std::optional<Peer>& peer, const std::string& line);

} // namespace service
