// SPDX-License-Identifier: MIT
//
// subcommands.h: adds the subcommands that send requests. Each is a row with its name, its purpose,
// its function and the end of its help.
#pragma once

#include <CLI/CLI.hpp>
#include <memory>
#include <span>

#include "client/connection_options.h"

namespace client {

/// A subcommand that sends requests. The values of the command line are stored in Options, which
/// has a member "connection".
template <class Options> struct Action {
    const char* name;
    const char* purpose;
    void (*run)(const Options& options);
    const char* footer;                                                ///< the end of the help
    void (*addOptions)(CLI::App& command, Options& options) = nullptr; ///< the action's own
};

/// Adds "--json" to a command whose Options has a member "json".
template <class Options> void addJson(CLI::App& command, Options& options)
{
    command.add_flag("--json", options.json, "Print JSON for programs");
}

/// Adds a subcommand. Its own options are in the help before those of the connection.
/// @return the values of its command line; they exist as long as the subcommand
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
