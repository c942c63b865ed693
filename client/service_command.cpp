// SPDX-License-Identifier: MIT
#include "client/service_command.h"

#include <iostream>
#include <memory>

#include "client/answer.h"
#include "client/request.h"

namespace client {
namespace {

ExitCode restart(const Connection& connection)
{
    const Reply reply = sendRequest(connection, makeFrame("sgss", 0));
    if (reply.code != kGood) {
        std::cerr << "vokctl: " << reply.complaint << "\n";
        return reply.code;
    }
    const Answer answer = readAnswer(reply.bytes);
    if (answer.shape != Shape::kWord) {
        std::cerr << "vokctl: the answer cannot be read; it is " << describeAnswer(answer) << "\n";
        return kUnreadableAnswer;
    }
    if (answer.value != 0) {
        std::cerr << "vokctl: " << explainStatus(answer.value) << "\n";
        return kRefused;
    }
    std::cerr << "vokctl: the status service was started, unless it was running already\n";
    return kGood;
}

} // namespace

void addServiceCommand(CLI::App& program, int& exitCode)
{
    CLI::App* service = program.add_subcommand("service", "The service that collects the status");
    service->require_subcommand(1);
    CLI::App* command = service->add_subcommand("restart", "Start it, unless it runs already");
    const auto connection = std::make_shared<Connection>();
    addConnectionOptions(*command, *connection);
    command->footer("Examples:\n"
                    "  vokctl service restart && vokctl status --wait 60 --max-age 60");
    command->callback([connection, &exitCode] { exitCode = restart(*connection); });
}

} // namespace client
