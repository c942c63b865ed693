// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <span>
#include <string_view>

#include "client/check_report.h"
#include "client/commands.h"
#include "client/failure.h"
#include "config/configuration.h"

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

/// All options of all subcommands take longer to build than a status takes to show. Only what the
/// command line names can be asked for; of the others their names and purposes are enough.
void addSubcommands(CLI::App& program, std::span<char* const> arguments)
{
    for (const client::Subcommand& each : client::kSubcommands) {
        CLI::App* command = program.add_subcommand(each.name, each.purpose);
        if (std::ranges::find(arguments, std::string_view(each.name)) != arguments.end()) {
            each.build(*command);
        }
    }
}

/// To a monitoring system the usual code would be a critical state.
int usageCode(const CLI::App& program)
{
    return program.got_subcommand("check") ? client::kCheckUnknown : client::kWrongUsage;
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
        return finishOutput(isHelp ? client::kGood : usageCode(program));
    } catch (const client::ExitWith& end) {
        return finishOutput(end.code);
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
    } catch (const config::BadConfiguration& failure) {
        std::cerr << "vokctl: " << failure.what() << "\n";
        return client::kWrongUsage;
    } catch (const std::exception& failure) {
        std::cerr << "vokctl: " << failure.what() << "\n";
        return client::kFailed;
    }
}
