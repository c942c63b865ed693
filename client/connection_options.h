// SPDX-License-Identifier: MIT
//
// connection_options.h: the options that say how to reach the service.
#pragma once

#include <CLI/CLI.hpp>

#include "client/connection.h"

namespace client {

/// Adds them to a subcommand that asks the service.
inline void addConnectionOptions(CLI::App& command, Connection& connection)
{
    command.add_option("--socket", connection.socket, "Where the service listens")
        ->type_name("PATH")
        ->capture_default_str();
    command.add_option("--timeout", connection.timeout, "Wait at most so long for the answer")
        ->type_name("SECONDS")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
}

} // namespace client
