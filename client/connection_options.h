// SPDX-License-Identifier: MIT
//
// connection_options.h: the options for the connection to the service, and those that can be before
// the command.
#pragma once

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "client/connection.h"
#include "client/numbers.h"
#include "config/configuration.h"

namespace client {

/// What can be before the command, too; the first three have a value.
constexpr auto kOptionsBeforeCommand = std::to_array<std::string_view>(
    {"--socket", "--timeout", "--config", "--json", "--any-server"});

/// Whether one of these options has a value.
[[nodiscard]] constexpr bool hasValue(std::string_view option)
{
    constexpr std::size_t kWithValue = 3;
    const auto* end = kOptionsBeforeCommand.begin() + kWithValue;
    return std::find(kOptionsBeforeCommand.begin(), end, option) != end;
}

/// Adds them to a subcommand that sends requests.
inline void addConnectionOptions(CLI::App& command, Connection& connection)
{
    const config::Configuration defaults;
    command.add_option("--socket", connection.socket, "The service's socket")
        ->type_name("PATH")
        ->default_str(defaults.socket);
    command.add_option("--timeout", connection.timeout, "Wait at most this long for the answer")
        ->type_name("SECONDS")
        ->check(secondsAboveZero("--timeout"))
        ->default_str(std::to_string(defaults.clientTimeout));
    command.add_option("--config", connection.file, "The file with the settings")
        ->type_name("PATH")
        ->capture_default_str();
    command.add_flag("--any-server", connection.anyServer,
                     "Use the service even if neither root nor you run it");
}

} // namespace client
