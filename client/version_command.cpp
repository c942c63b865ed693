// SPDX-License-Identifier: MIT
#include <iostream>
#include <memory>

#include "client/commands.h"
#include "client/connection_options.h"
#include "client/exchange.h"
#include "view/terminal_text.h"

namespace client {
namespace {

void showVersion(const Connection& connection)
{
    const Request request = {cmdsvc::command("vers")};
    const auto [answer, lines] = askForLines(connection, request);
    if (lines.size() != 1) {
        failUnreadable(request, answer);
    }
    std::cout << view::makePrintable(lines[0]).text << "\n";
}

} // namespace

void buildVersionCommand(CLI::App& version)
{
    const auto connection = std::make_shared<Connection>();
    addConnectionOptions(version, *connection);
    version.footer("Examples:\n"
                   "  vokctl version");
    version.callback([connection] { showVersion(*connection); });
}

} // namespace client
