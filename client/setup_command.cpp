// SPDX-License-Identifier: MIT
#include <iostream>
#include <memory>

#include "client/commands.h"
#include "client/exchange.h"
#include "client/json_text.h"
#include "view/terminal_text.h"

namespace client {
namespace {

struct Options {
    Connection connection;
    bool json = false;
};

void addPending(CLI::App& setup)
{
    const auto options = std::make_shared<Options>();
    CLI::App* pending =
        setup.add_subcommand("pending", "Tell whether the first setup is to be done");
    addConnectionOptions(*pending, options->connection);
    pending->footer("Examples:\n"
                    "  vokctl setup pending && echo 'set it up first'\n"
                    "\n"
                    "Ends with 0 when it is, and with 1 when it has been done.");
    pending->callback([options] {
        askToDo(options->connection, {cmdsvc::command("frst")});
        std::cerr << "vokctl: the appliance waits for its first setup\n";
    });
}

void showQuickSetup(const Options& options)
{
    const Request request = {cmdsvc::command("qlps")};
    const auto [answer, lines] = askForLines(options.connection, request);
    if (lines.size() != 2) {
        failUnreadable(request, answer);
    }
    if (options.json) {
        Json json;
        json["language"] = lines[0];
        json["public_share_name"] = lines[1];
        std::cout << renderJson(json);
        return;
    }
    std::cout << "Language:           " << view::makePrintable(lines[0]).text << "\n"
              << "Public share name:  " << view::makePrintable(lines[1]).text << "\n";
}

void addQuick(CLI::App& setup)
{
    const auto options = std::make_shared<Options>();
    CLI::App* quick = setup.add_subcommand(
        "quick", "Tell the language, and what the public share is called in it");
    quick->add_flag("--json", options->json, "Print JSON for programs");
    addConnectionOptions(*quick, options->connection);
    quick->footer("Examples:\n"
                  "  vokctl setup quick\n"
                  "  vokctl setup quick --json");
    quick->callback([options] { showQuickSetup(*options); });
}

} // namespace

void buildSetupCommand(CLI::App& setup)
{
    setup.require_subcommand(1);
    addPending(setup);
    addQuick(setup);
}

} // namespace client
