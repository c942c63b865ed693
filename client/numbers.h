// SPDX-License-Identifier: MIT
//
// numbers.h: which numbers an option takes, with a whole sentence about others. The library's own
// checks know English only, and print the largest number in full.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace client {

/// @param option  its name for the sentence, such as "--state"
/// @return a check for add_option() and an unsigned number; the help shows the range
[[nodiscard]] CLI::Validator numberFrom(const std::string& option, unsigned least, unsigned most);

/// The same for a number of seconds above 0.
[[nodiscard]] CLI::Validator secondsAboveZero(const std::string& option);

} // namespace client
