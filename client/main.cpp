// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <iostream>
#include <span>
#include <string_view>

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

struct Subcommand {
    const char* name;
    const char* purpose; ///< its line in the help of the whole program
    void (*build)(CLI::App& command);
};

constexpr auto kSubcommands = std::to_array<Subcommand>({
    {"status", "Show every share's space and last backup, as last published",
     client::buildStatusCommand},
    {"shares", "The appliance's shares", client::buildSharesCommand},
    {"users", "The appliance's accounts", client::buildUsersCommand},
    {"backup", "What backup clients report", client::buildBackupCommand},
    {"drives", "The appliance's disks", client::buildDrivesCommand},
    {"host", "The appliance's names, clock and language", client::buildHostCommand},
    {"version", "Tell what build the appliance runs", client::buildVersionCommand},
    {"private", "The file that clients keep on the appliance", client::buildPrivateCommand},
    {"setup", "What a setup program asks first", client::buildSetupCommand},
    {"remote", "Reaching the appliance from outside", client::buildRemoteCommand},
    {"service", "The service that collects the status", client::buildServiceCommand},
    {"raw", "Send any request and show the bytes of the answer", client::buildRawCommand},
});

/// All options of all subcommands take longer to build than a status takes to show. Only what the
/// command line names can be asked for; of the others their names and purposes are enough.
void addSubcommands(CLI::App& program, std::span<char* const> arguments)
{
    for (const Subcommand& each : kSubcommands) {
        CLI::App* command = program.add_subcommand(each.name, each.purpose);
        if (std::ranges::find(arguments, std::string_view(each.name)) != arguments.end()) {
            each.build(*command);
        }
    }
}

int run(int argc, char** argv)
{
    CLI::App program("Talks to the appliance's control module.", "vokctl");
    program.set_version_flag("--version", "vokctl " VOKCTL_VERSION);
    program.footer("\"vokctl COMMAND --help\" tells more about a command.");
    addSubcommands(program, std::span(argv, static_cast<std::size_t>(argc)));
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
