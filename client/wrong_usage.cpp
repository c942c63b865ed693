// SPDX-License-Identifier: MIT
#include "client/wrong_usage.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

#include "client/connection_options.h"
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

/// A group of options, which is a subcommand to the library, has no name.
std::vector<std::string> commandsOf(const CLI::App& command)
{
    std::vector<std::string> names;
    const auto hasName = [](const CLI::App* each) { return !each->get_name().empty(); };
    for (const CLI::App* each : command.get_subcommands(hasName)) {
        names.push_back(each->get_name());
    }
    return names;
}

/// The program itself takes some options for its commands.
std::vector<std::string> optionsOf(const CLI::App& command)
{
    std::vector<std::string> names;
    if (command.get_parent() == nullptr) {
        names.assign(kOptionsBeforeCommand.begin(), kOptionsBeforeCommand.end());
    }
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

/// An option that the program takes for its commands, but that no command follows.
std::string optionWithoutCommand(const std::string& option, const CLI::App& program)
{
    const bool isLast = program.remaining(true).back() == option;
    const std::string name = option.substr(0, option.find('='));
    return isLast && name == option && hasValue(name)
               ? fill(tr("{} needs a value."), {name})
               : fill(tr("{} is an option of a command, but no command is given."), {name});
}

/// The text before a part, if the part is in the text.
std::optional<std::string> before(const std::string& text, std::string_view part)
{
    const std::size_t end = text.find(part);
    return (end != std::string::npos) ? std::optional(text.substr(0, end)) : std::nullopt;
}

/// In words of ours what the library says in English only; nothing for what it says rarely.
std::optional<std::string> translate(const CLI::ParseError& error)
{
    const std::string said = error.what();
    const std::string name = before(said, ": ").value_or("");
    switch (static_cast<CLI::ExitCodes>(error.get_exit_code())) {
    case CLI::ExitCodes::RequiredError: {
        const auto missing = before(said, " is required");
        return missing ? std::optional(fill(tr("{} is required."), {*missing})) : std::nullopt;
    }
    case CLI::ExitCodes::ArgumentMismatch:
        return said.ends_with(" missing") ? fill(tr("{} needs a value."), {name})
                                          : fill(tr("{} can be given only once."), {name});
    case CLI::ExitCodes::ConversionError: {
        constexpr std::string_view kStart = "Could not convert: ";
        const auto option = before(said, " = ");
        const std::string value = said.substr(said.find(" = ") + 3);
        return said.starts_with(kStart) && option
                   ? std::optional(fill(tr("{1} does not take {2}."),
                                        {option->substr(kStart.size()), quoted(value)}))
                   : std::nullopt;
    }
    case CLI::ExitCodes::ValidationError: {
        // A sentence of our own has the option's name already.
        const std::string complaint = said.substr(said.find(": ") + 2);
        return complaint.starts_with(name + " ") ? std::optional(complaint) : std::nullopt;
    }
    case CLI::ExitCodes::ExcludesError: {
        constexpr std::string_view kBetween = " excludes ";
        const std::string first = before(said, kBetween).value_or(said);
        return fill(tr("{1} and {2} cannot be given together."),
                    {first, said.substr(first.size() + kBetween.size())});
    }
    default:
        return std::nullopt;
    }
}

/// The first word that the command does not know. After "--" no word is an option.
struct Unknown {
    std::string word;
    bool isOption;
};

std::optional<Unknown> unknownIn(const CLI::App& program, const CLI::ParseError& error)
{
    const std::vector<std::string> words = program.remaining(true);
    if (!words.empty() && words.front() != "--") {
        return Unknown{words.front(), words.front().starts_with('-')};
    }
    const bool isTooMuch =
        error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError) && words.size() > 1;
    return isTooMuch ? std::optional(Unknown{words[1], false}) : std::nullopt;
}

std::string explainUnknown(const CLI::App& program, const Named& named, const Unknown& unknown)
{
    const std::string name = unknown.word.substr(0, unknown.word.find('='));
    if (!unknown.isOption) {
        return unknownCommand(named, unknown.word);
    }
    return named.command == &program &&
                   std::ranges::find(kOptionsBeforeCommand, name) != kOptionsBeforeCommand.end()
               ? optionWithoutCommand(unknown.word, program)
               : unknownOption(named, unknown.word);
}

std::string explain(const CLI::App& program, const Named& named, const CLI::ParseError& error)
{
    if (const std::optional<Unknown> unknown = unknownIn(program, error)) {
        return explainUnknown(program, named, *unknown);
    }
    const std::vector<std::string> commands = commandsOf(*named.command);
    if (!commands.empty()) {
        return fill(tr("{1} needs a command: {2}."),
                    {quoted(named.name), view::formatNames(commands)});
    }
    return translate(error).value_or(std::string(error.what()) + ".");
}

} // namespace

std::string wrongUsage(const CLI::App& program, const CLI::ParseError& error)
{
    const Named named = lastNamed(program);
    return "vokctl: " + explain(program, named, error) + "\n" +
           fill(tr("See {}."), {quoted(named.name + " --help")}) + "\n";
}

} // namespace client
