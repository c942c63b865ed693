// SPDX-License-Identifier: MIT
#include "client/wrong_usage.h"

#include <algorithm>
#include <vector>

#include "client/nearest_word.h"

namespace client {
namespace {

/// The command that the line names last, such as "list" of "shares list", with its whole name.
struct Named {
    const CLI::App* command;
    std::string name;
};

Named lastNamed(const CLI::App& program)
{
    Named named = {&program, program.get_name()};
    while (!named.command->get_subcommands().empty()) {
        named.command = named.command->get_subcommands().front();
        named.name += " " + named.command->get_name();
    }
    return named;
}

std::vector<std::string> commandsOf(const CLI::App& command)
{
    std::vector<std::string> names;
    for (const CLI::App* each : command.get_subcommands([](const CLI::App*) { return true; })) {
        names.push_back(each->get_name());
    }
    return names;
}

std::vector<std::string> optionsOf(const CLI::App& command)
{
    std::vector<std::string> names;
    for (const CLI::Option* each : command.get_options()) {
        for (const std::string& name : each->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    return names;
}

std::string quoted(const std::string& text)
{
    return "\"" + text + "\"";
}

std::string joined(const std::vector<std::string>& words)
{
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : ", ") + word;
    }
    return text;
}

/// Ends a sentence about a word that is not known.
std::string withGuess(const std::string& sentence, const std::string& word,
                      const std::vector<std::string>& known)
{
    const std::string guess = nearestWord(word, known);
    return sentence + (guess.empty() ? "." : "; did you mean " + quoted(guess) + "?");
}

std::string unknownWord(const Named& named, const std::string& word)
{
    if (word.starts_with('-')) {
        return withGuess(quoted(named.name) + " has no option " + quoted(word), word,
                         optionsOf(*named.command));
    }
    const std::vector<std::string> commands = commandsOf(*named.command);
    if (commands.empty()) {
        return quoted(named.name) + " does not take " + quoted(word) + ".";
    }
    return withGuess(quoted(named.name) + " has no command " + quoted(word), word, commands);
}

std::string explain(const CLI::App& program, const Named& named, const CLI::ParseError& error)
{
    const std::vector<std::string> unknown = program.remaining(true);
    if (!unknown.empty()) {
        return unknownWord(named, unknown.front());
    }
    const std::vector<std::string> commands = commandsOf(*named.command);
    if (!commands.empty()) {
        return quoted(named.name) + " needs a command: " + joined(commands) + ".";
    }
    return std::string(error.what()) + ".";
}

} // namespace

std::string wrongUsage(const CLI::App& program, const CLI::ParseError& error)
{
    const Named named = lastNamed(program);
    return "vokctl: " + explain(program, named, error) + "\n" + quoted(named.name + " --help") +
           " tells more.\n";
}

} // namespace client
