// SPDX-License-Identifier: MIT
//
// wrong_usage.h: says what is wrong with a command line, and what was probably meant.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace client {

/// @param program  after its parse() has thrown
/// @param error    what it has thrown, and not a request for help
/// @return sentences for standard error, each with its newline
[[nodiscard]] std::string wrongUsage(const CLI::App& program, const CLI::ParseError& error);

} // namespace client
