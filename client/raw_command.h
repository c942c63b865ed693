// SPDX-License-Identifier: MIT
//
// raw_command.h: "vokctl raw", any request at all.
#pragma once

#include <CLI/CLI.hpp>

namespace client {

/// Adds the subcommand to the program.
/// @param exitCode  set when the subcommand has run; must outlive the program's parsing
void addRawCommand(CLI::App& program, int& exitCode);

} // namespace client
