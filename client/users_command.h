// SPDX-License-Identifier: MIT
//
// users_command.h: "vokctl users", the appliance's accounts.
#pragma once

#include <CLI/CLI.hpp>

namespace client {

/// Adds the subcommand to the program.
/// @param exitCode  set when the subcommand has run; must outlive the program's parsing
void addUsersCommand(CLI::App& program, int& exitCode);

} // namespace client
