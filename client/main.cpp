// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <iostream>
#include <span>
#include <string_view>
#include <vector>

#include "client/check_report.h"
#include "client/commands.h"
#include "client/failure.h"
#include "client/wrong_usage.h"
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

/// How many words of the command line an option before the command takes; 0 if it is none that
/// commands have in common.
std::size_t wordsOf(std::string_view word)
{
    constexpr auto kWithValue =
        std::to_array<std::string_view>({"--socket", "--timeout", "--config"});
    constexpr auto kAlone = std::to_array<std::string_view>({"--json", "--any-server"});
    const std::string_view name = word.substr(0, word.find('='));
    if (std::ranges::find(kWithValue, name) != kWithValue.end()) {
        return (name.size() < word.size()) ? 1 : 2;
    }
    return (std::ranges::find(kAlone, word) != kAlone.end()) ? 1 : 0;
}

/// The command line with the options before the command moved to its end, where the command has
/// them. After "--" there are no options, so they stay in front of that.
std::vector<char*> withCommandFirst(std::span<char* const> arguments)
{
    std::size_t start = std::min<std::size_t>(arguments.size(), 1);
    while (start < arguments.size() && wordsOf(arguments[start]) > 0) {
        start = std::min(start + wordsOf(arguments[start]), arguments.size());
    }
    std::vector<char*> words(arguments.begin(), arguments.end());
    const auto end = std::find_if(words.begin(), words.end(),
                                  [](const char* word) { return std::string_view(word) == "--"; });
    std::rotate(words.begin() + std::min<std::ptrdiff_t>(1, std::ssize(words)),
                words.begin() + static_cast<std::ptrdiff_t>(start), end);
    return words;
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
    program.footer(
        "\"vokctl COMMAND --help\" tells more about a command. Its options --socket, --timeout,\n"
        "--config, --any-server and --json may stand before it, too.\n"
        "What to do about a message: /usr/share/doc/vokcontrol/troubleshooting.md");
    const std::vector<char*> words =
        withCommandFirst(std::span(argv, static_cast<std::size_t>(argc)));
    addSubcommands(program, words);
    try {
        program.parse(argc, words.data());
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) {
            program.exit(error); // prints the help or the version
            return finishOutput(client::kGood);
        }
        std::cerr << client::wrongUsage(program, error);
        return usageCode(program);
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
