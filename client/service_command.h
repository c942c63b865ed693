// SPDX-License-Identifier: MIT
//
// service_command.h: "vokctl service", the appliance's status service.
#pragma once

#include <CLI/CLI.hpp>

namespace client {

/// Adds the subcommand to the program.
/// @param exitCode  set when the subcommand has run; must outlive the program's parsing
void addServiceCommand(CLI::App& program, int& exitCode);

} // namespace client
