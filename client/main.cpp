// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>
#include <iostream>

#include "client/commands.h"
#include "client/failure.h"

namespace {

/// Standard output may lead to a full disk; an answer cut short must not pass for a whole one.
int finishOutput(int exitCode)
{
    std::cout.flush();
    if (std::cout) {
        return exitCode;
    }
    std::cerr << "vokctl: cannot write to standard output\n";
    return client::kFailed;
}

int run(int argc, char** argv)
{
    CLI::App program("Talks to the appliance's control module.", "vokctl");
    program.set_version_flag("--version", "vokctl " VOKCTL_VERSION);
    program.footer("\"vokctl COMMAND --help\" tells more about a command.");
    client::addStatusCommand(program);
    client::addSharesCommand(program);
    client::addUsersCommand(program);
    client::addBackupCommand(program);
    client::addDrivesCommand(program);
    client::addHostCommand(program);
    client::addVersionCommand(program);
    client::addPrivateCommand(program);
    client::addSetupCommand(program);
    client::addRemoteCommand(program);
    client::addServiceCommand(program);
    client::addRawCommand(program);
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        const bool isHelp = program.exit(error) == 0;
        return finishOutput(isHelp ? client::kGood : client::kWrongUsage);
    }
    if (program.get_subcommands().empty()) {
        std::cerr << program.help();
        return client::kWrongUsage;
    }
    return finishOutput(client::kGood);
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return run(argc, argv);
    } catch (const client::Failure& failure) {
        std::cerr << "vokctl: " << failure.what() << "\n";
        return failure.code();
    } catch (const std::exception& failure) {
        std::cerr << "vokctl: " << failure.what() << "\n";
        return client::kFailed;
    }
}
