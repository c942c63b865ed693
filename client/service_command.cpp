// SPDX-License-Identifier: MIT
#include <iostream>
#include <memory>

#include "client/commands.h"
#include "client/connection_options.h"
#include "client/exchange.h"

void client::buildServiceCommand(CLI::App& service)
{
    service.require_subcommand(1);
    CLI::App* command = service.add_subcommand("restart", "Start it, unless it runs already");
    const auto connection = std::make_shared<Connection>();
    addConnectionOptions(*command, *connection);
    command->footer("Examples:\n"
                    "  vokctl service restart && vokctl status --wait 60 --max-age 60");
    command->callback([connection] {
        askToDo(*connection, {cmdsvc::command("sgss")});
        std::cerr << "vokctl: the status service was started, unless it was running already\n";
    });
}
