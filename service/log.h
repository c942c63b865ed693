// SPDX-License-Identifier: MIT
//
// log.h: one line a request on standard error. Parameters are people's names and passwords, so no
// line ever holds one.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "service/child.h"

namespace service {

/// "12 lstu count=0 answer=25 ms=31", and what went wrong behind it. A code that is not made of
/// four letters and digits is shown as its bytes, "0x" and hexadecimal digits.
[[nodiscard]] std::string describe(int number, std::string_view request, const Outcome& outcome,
                                   std::chrono::milliseconds taken);

/// Writes a line to standard error in one piece.
void log(const std::string& line);

} // namespace service
