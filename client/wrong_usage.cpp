// SPDX-License-Identifier: MIT
#include "client/wrong_usage.h"

#include <algorithm>
#include <vector>

#include "client/nearest_word.h"
#include "text/translation.h"
#include "view/wording.h"

namespace client {
namespace {

using text::fill;
using text::tr;

/// The last command on the line, such as "list" of "shares list", with its whole name.
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

std::string unknownOption(const Named& named, const std::string& word)
{
    const std::string guess = nearestWord(word, optionsOf(*named.command));
    if (guess.empty()) {
        return fill(tr("{1} has no option {2}."), {quoted(named.name), quoted(word)});
    }
    return fill(tr("{1} has no option {2}; did you mean {3}?"),
                {quoted(named.name), quoted(word), quoted(guess)});
}

std::string unknownCommand(const Named& named, const std::string& word)
{
    const std::vector<std::string> commands = commandsOf(*named.command);
    if (commands.empty()) {
        return fill(tr("{1} does not take {2}."), {quoted(named.name), quoted(word)});
    }
    const std::string guess = nearestWord(word, commands);
    if (guess.empty()) {
        return fill(tr("{1} has no command {2}."), {quoted(named.name), quoted(word)});
    }
    return fill(tr("{1} has no command {2}; did you mean {3}?"),
                {quoted(named.name), quoted(word), quoted(guess)});
}

std::string explain(const CLI::App& program, const Named& named, const CLI::ParseError& error)
{
    const std::vector<std::string> unknown = program.remaining(true);
    if (!unknown.empty()) {
        const std::string& word = unknown.front();
        return word.starts_with('-') ? unknownOption(named, word) : unknownCommand(named, word);
    }
    const std::vector<std::string> commands = commandsOf(*named.command);
    if (!commands.empty()) {
        return fill(tr("{1} needs a command: {2}."),
                    {quoted(named.name), view::formatNames(commands)});
    }
    return std::string(error.what()) + ".";
}

} // namespace

std::string wrongUsage(const CLI::App& program, const CLI::ParseError& error)
{
    const Named named = lastNamed(program);
    return "vokctl: " + explain(program, named, error) + "\n" +
           fill(tr("See {}."), {quoted(named.name + " --help")}) + "\n";
}

} // namespace client
