// SPDX-License-Identifier: MIT
#include <array>
#include <iostream>

#include "client/commands.h"
#include "client/exchange.h"
#include "client/failure.h"
#include "client/json_text.h"
#include "client/lists.h"
#include "client/password.h"
#include "client/subcommands.h"
#include "view/terminal_text.h"

namespace client {
namespace {

struct Options {
    Connection connection;
    std::string name;
    bool json = false;
    bool emptyPassword = false;
};

// ---- list -------------------------------------------------------------------------------------

std::string renderText(const std::vector<std::string>& users)
{
    std::string text;
    for (const std::string& user : users) {
        text += view::makePrintable(user).text + "\n";
    }
    return text;
}

void listUsers(const Options& options)
{
    const std::vector<std::string> users = fetchUsers(options.connection);
    Json json;
    json["users"] = users;
    std::cout << (options.json ? renderJson(json) : renderText(users));
}

// ---- Passwords --------------------------------------------------------------------------------

/// An empty line is a slip more often than a password.
std::string checkedPassword(const Options& options, std::string password)
{
    if (password.empty() && !options.emptyPassword) {
        throw Failure(kWrongUsage, "the password is empty; if it is meant to be: --empty-password");
    }
    return password;
}

void addPasswordOption(CLI::App& command, Options& options)
{
    command.add_flag("--empty-password", options.emptyPassword, "Take an empty password, too");
}

// ---- create -----------------------------------------------------------------------------------

void createUser(const Options& options)
{
    // Before anybody types a password for it.
    checkedLine(options.name);
    askToDo(options.connection,
            {cmdsvc::command("crat"), {options.name, checkedPassword(options, readNewPassword())}});
    std::cerr << "vokctl: the user " << view::makePrintable(options.name).text << " was created\n";
}

void addNewName(CLI::App& command, Options& options)
{
    constexpr std::size_t kLongest = cmdsvc::parameter("crat", "user").limit.longest;
    command
        .add_option("NAME", options.name,
                    "The user's name, at most " + std::to_string(kLongest) + " bytes")
        ->required();
    addPasswordOption(command, options);
}

// ---- verify -----------------------------------------------------------------------------------

void verifyUser(const Options& options)
{
    checkedLine(options.name);
    const Request request = {cmdsvc::command("wall"),
                             {options.name, checkedPassword(options, readPassword())}};
    if (!askForBytes(options.connection, request, "\n").empty()) {
        throw Failure(kUnreadableAnswer, "the answer is longer than it can be");
    }
    std::cerr << "vokctl: the password is right\n";
}

void addName(CLI::App& command, Options& options)
{
    command.add_option("NAME", options.name, "The user's name")->required();
    addPasswordOption(command, options);
}

// ---- Adding them ------------------------------------------------------------------------------

constexpr auto kActions = std::to_array<Action<Options>>({
    {"list", "List the names of all accounts, one a line", listUsers,
     "Examples:\n"
     "  vokctl users list          one name a line\n"
     "  vokctl users list --json   for programs",
     addJson},
    {"create", "Create an account", createUser,
     "Examples:\n"
     "  vokctl users create carla            asks for the password, twice\n"
     "  vokctl users create carla <secret    takes a file's first line as password\n"
     "\n"
     "A password never stands on the command line, where others could read it.",
     addNewName},
    {"verify", "Check a user's password", verifyUser,
     "Examples:\n"
     "  vokctl users verify carla            asks for the password\n"
     "  vokctl users verify carla <secret    takes a file's first line as password\n"
     "\n"
     "Ends with 0 when the password is right and with 1 when it is not. The appliance\n"
     "does not tell a wrong password from an unknown user.",
     addName},
});

} // namespace

void buildUsersCommand(CLI::App& users)
{
    addActions<Options>(users, kActions);
}

} // namespace client
