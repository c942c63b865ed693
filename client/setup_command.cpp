// SPDX-License-Identifier: MIT
#include <array>
#include <iostream>

#include "client/commands.h"
#include "client/exchange.h"
#include "client/failure.h"
#include "client/json_text.h"
#include "client/subcommands.h"
#include "client/text_table.h"
#include "text/translation.h"
#include "view/terminal_text.h"

namespace client {
namespace {

using text::tr;

struct Options {
    Connection connection;
    bool json = false;
};

void tellPending(const Options& options)
{
    try {
        askToDo(options.connection, {cmdsvc::command("frst")});
    } catch (const Refused& refusal) {
        if (refusal.status() != cmdsvc::kSetupDone) {
            throw;
        }
        throw Failure(refusal.code(), tr("the first setup has been done"));
    }
    std::cerr << "vokctl: " << tr("the appliance waits for its first setup") << "\n";
}

void showQuickSetup(const Options& options)
{
    const Request request = {cmdsvc::command("qlps")};
    const auto [answer, lines] = askForLines(options.connection, request);
    if (lines.size() != 2) {
        failUnreadable(request, answer);
    }
    if (options.json) {
        std::cout << renderJson({{"language", lines[0]}, {"public_share_name", lines[1]}});
        return;
    }
    constexpr auto kColumns = std::to_array<Align>({Align::kLeft, Align::kLeft});
    std::cout << layOutTable(
        kColumns, {{view::makePrintable(tr("Language:")), view::makePrintable(lines[0])},
                   {view::makePrintable(tr("Public share name:")), view::makePrintable(lines[1])}});
}

constexpr auto kActions = std::to_array<Action<Options>>({
    {"pending", "Show whether the first setup is pending", tellPending,
     "Examples:\n"
     "  vokctl setup pending && echo 'set it up first'\n"
     "\n"
     "Ends with 0 if it is pending, and with 1 if it has been done."},
    {"quick", "Show the language, and the public share's name in it", showQuickSetup,
     "Examples:\n"
     "  vokctl setup quick\n"
     "  vokctl setup quick --json",
     addJson},
});

} // namespace

void buildSetupCommand(CLI::App& setup)
{
    addActions<Options>(setup, kActions);
}

} // namespace client
