// SPDX-License-Identifier: MIT
//
// log.h: one line per request on standard error. Parameters may be names and passwords, so no line
// contains one.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "service/child.h"
#include "service/peer.h"

namespace service {

/// "12 lstu count=0 answer=25 ms=31", and after it why the request failed, if it did. A code that
/// is not four letters or digits is shown as "0x" and its bytes in hexadecimal digits.
[[nodiscard]] std::string describe(int number, std::string_view request, const Outcome& outcome,
                                   std::chrono::milliseconds taken);

/// The command of a request as log lines show it.
[[nodiscard]] std::string describeCommand(std::string_view request);

/// "uid=1000 pid=4711"; with question marks if the peer is unknown.
[[nodiscard]] std::string describe(const std::optional<Peer>& peer);

/// Writes a line to standard error in one piece.
void log(const std::string& line);

/// The same for a line about a client: it begins with the client's user and process.
void log(const std::optional<Peer>& peer, const std::string& line);

/// Logs that a parameter of a request was refused.
void logRefusal(const Peer& peer, int number, std::string_view parameter);

/// Logs a request that has ended, and what its programs have said.
void logRequest(const Peer& peer, int number, std::string_view request, const Outcome& outcome,
                std::chrono::milliseconds taken);

} // namespace service
