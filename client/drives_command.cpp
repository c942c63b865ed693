// SPDX-License-Identifier: MIT
#include <iostream>
#include <memory>

#include "client/commands.h"
#include "client/connection_options.h"
#include "client/exchange.h"
#include "text/translation.h"

void client::buildDrivesCommand(CLI::App& drives)
{
    drives.require_subcommand(1);
    CLI::App* check = drives.add_subcommand("check", "Check that the drives can be counted");
    const auto connection = std::make_shared<Connection>();
    addConnectionOptions(*check, *connection);
    check->footer("Examples:\n"
                  "  vokctl drives check && echo good");
    check->callback([connection] {
        askToDo(*connection, {cmdsvc::command("grst")});
        std::cerr << "vokctl: " << text::tr("the number of drives can be read") << "\n";
    });
}
