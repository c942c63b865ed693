// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <span>
#include <string_view>
#include <vector>

#include "client/check_report.h"
#include "client/commands.h"
#include "client/connection_options.h"
#include "client/failure.h"
#include "client/language.h"
#include "client/reasons.h"
#include "client/wrong_usage.h"
#include "config/configuration.h"
#include "text/translation.h"

namespace {

/// Checks that all output was written: standard output may be a file on a full disk.
int finishOutput(int exitCode)
{
    std::cout.flush();
    if (std::cout) {
        return exitCode;
    }
    std::cerr << "vokctl: " << text::tr("cannot write to standard output") << "\n";
    return client::kFailed;
}

/// How many words of the command line an option before the command takes; 0 if it is not one of the
/// options that all commands have.
std::size_t wordsOf(std::string_view word)
{
    const std::string_view name = word.substr(0, word.find('='));
    if (client::hasValue(name)) {
        return (name.size() < word.size()) ? 1 : 2;
    }
    const auto* end = client::kOptionsBeforeCommand.end();
    return (std::find(client::kOptionsBeforeCommand.begin(), end, word) != end) ? 1 : 0;
}

/// The command line with the options before the command moved to its end, because they belong to
/// the command. After "--" there are no options, so they are put before it.
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

/// Builds only the subcommand that the command line names; the others have only name and purpose.
/// Building the options of all takes longer than showing a status.
void addSubcommands(CLI::App& program, std::span<char* const> arguments)
{
    for (const client::Subcommand& each : client::kSubcommands) {
        CLI::App* command = program.add_subcommand(each.name, each.purpose);
        if (std::ranges::find(arguments, std::string_view(each.name)) != arguments.end()) {
            each.build(*command);
        }
    }
}

/// For "check", a monitoring system would take the usual exit code for a critical state.
int usageCode(const CLI::App& program)
{
    return program.got_subcommand("check") ? client::kCheckUnknown : client::kWrongUsage;
}

int run(int argc, char** argv)
{
    CLI::App program("Talks to the appliance's control module.", "vokctl");
    program.set_version_flag("--version", "vokctl " VOKCTL_VERSION);
    program.footer(
        "\"vokctl COMMAND --help\" explains a command. The options --socket, --timeout, --config,\n"
        "--any-server and --json can be before the command, too.\n"
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
    text::speak(client::languageFor(std::span(argv, static_cast<std::size_t>(argc))));
    try {
        return run(argc, argv);
    } catch (const client::Refused& refusal) {
        std::cerr << "vokctl: " << refusal.what() << "\n";
        for (const std::string& line : client::reasonLines(refusal.reasons())) {
            std::cerr << "vokctl: " << text::fill(text::tr("The appliance says: {}"), {line})
                      << "\n";
        }
        return refusal.code();
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
