// SPDX-License-Identifier: MIT
#include "client/commands.h"

void client::buildServiceCommand(CLI::App& service)
{
    service.require_subcommand(1);
    CLI::App* command =
        service.add_subcommand("restart", "Start a collection; the same as \"vokctl collect\"");
    buildCollectCommand(*command);
    command->footer("Examples:\n"
                    "  vokctl service restart --wait 600 && vokctl status");
}
