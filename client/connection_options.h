// SPDX-License-Identifier: MIT
//
// connection_options.h: the options for the connection to the service.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "client/connection.h"
#include "config/configuration.h"

namespace client {

/// Adds them to a subcommand that sends requests.
inline void addConnectionOptions(CLI::App& command, Connection& connection)
{
    const config::Configuration defaults;
    command.add_option("--socket", connection.socket, "The service's socket")
        ->type_name("PATH")
        ->default_str(defaults.socket);
    command.add_option("--timeout", connection.timeout, "Wait at most this long for the answer")
        ->type_name("SECONDS")
        ->check(CLI::PositiveNumber)
        ->default_str(std::to_string(defaults.clientTimeout));
    command.add_option("--config", connection.file, "The file with the settings")
        ->type_name("PATH")
        ->capture_default_str();
    command.add_flag("--any-server", connection.anyServer,
                     "Use the service even if neither root nor you run it");
}

} // namespace client
