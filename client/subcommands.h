// SPDX-License-Identifier: MIT
//
// subcommands.h: how the subcommands that ask the service are put together. Each has a row, which
// says what it is called, what it does and what its help ends with.
#pragma once

#include <CLI/CLI.hpp>
#include <memory>
#include <span>

#include "client/connection_options.h"

namespace client {

/// A subcommand that asks the service. What the command line says goes into Options, which have a
/// member "connection".
template <class Options> struct Action {
    const char* name;
    const char* purpose;
    void (*run)(const Options& options);
    const char* footer;                                                ///< the help's last words
    void (*addOptions)(CLI::App& command, Options& options) = nullptr; ///< those of its own
};

/// Adds "--json" to a command whose Options have a member "json".
template <class Options> void addJson(CLI::App& command, Options& options)
{
    command.add_flag("--json", options.json, "Print JSON for programs");
}

/// Adds a subcommand. The options of its own stand in the help before those of the connection.
/// @return what its command line says; it lives as long as the subcommand
template <class Options> Options& addAction(CLI::App& parent, const Action<Options>& action)
{
    CLI::App* command = parent.add_subcommand(action.name, action.purpose);
    const auto options = std::make_shared<Options>();
    if (action.addOptions != nullptr) {
        action.addOptions(*command, *options);
    }
    addConnectionOptions(*command, options->connection);
    command->footer(action.footer);
    command->callback([run = action.run, options] { run(*options); });
    return *options;
}

/// Adds all subcommands of a command, which needs one of them.
template <class Options> void addActions(CLI::App& parent, std::span<const Action<Options>> actions)
{
    parent.require_subcommand(1);
    for (const Action<Options>& action : actions) {
        addAction(parent, action);
    }
}

} // namespace client
