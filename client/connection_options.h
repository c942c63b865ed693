// SPDX-License-Identifier: MIT
//
// connection_options.h: the options that say how to reach the service.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "client/connection.h"
#include "config/configuration.h"

namespace client {

/// Adds them to a subcommand that asks the service.
inline void addConnectionOptions(CLI::App& command, Connection& connection)
{
    const config::Configuration defaults;
    command.add_option("--socket", connection.socket, "Where the service listens")
        ->type_name("PATH")
        ->default_str(defaults.socket);
    command.add_option("--timeout", connection.timeout, "Wait at most so long for the answer")
        ->type_name("SECONDS")
        ->check(CLI::PositiveNumber)
        ->default_str(std::to_string(defaults.clientTimeout));
    command.add_option("--config", connection.file, "Where the settings are read")
        ->type_name("PATH")
        ->capture_default_str();
    command.add_flag("--any-server", connection.anyServer,
                     "Ask also if neither root nor you run the service");
}

} // namespace client
