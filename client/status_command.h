// SPDX-License-Identifier: MIT
//
// status_command.h: "vokctl status", the published share status.
#pragma once

#include <CLI/CLI.hpp>

namespace client {

/// Adds the subcommand to the program.
/// @param exitCode  set when the subcommand has run; must outlive the program's parsing
void addStatusCommand(CLI::App& program, int& exitCode);

} // namespace client
