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
#include "text/translation.h"
#include "view/terminal_text.h"

namespace client {
namespace {

using text::fill;
using text::tr;

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

/// Refuses an empty password without --empty-password: it is more often a mistake.
std::string checkedPassword(const Options& options, std::string password)
{
    if (password.empty() && !options.emptyPassword) {
        throw Failure(kWrongUsage,
                      tr("the password is empty; if it is meant to be: --empty-password"));
    }
    return password;
}

void addPasswordOption(CLI::App& command, Options& options)
{
    command.add_flag("--empty-password", options.emptyPassword, "Allow an empty password");
}

// ---- create -----------------------------------------------------------------------------------

void createUser(const Options& options)
{
    // Checked before a password is typed for it.
    checkedLine(options.name);
    askToDo(options.connection,
            {cmdsvc::command("crat"), {options.name, checkedPassword(options, readNewPassword())}});
    std::cerr << "vokctl: "
              << fill(tr("the user {} was created"), {view::makePrintable(options.name).text})
              << "\n";
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
        throw Failure(kUnreadableAnswer, tr("the answer is longer than a good answer can be"));
    }
    std::cerr << "vokctl: " << tr("the password is right") << "\n";
}

void addName(CLI::App& command, Options& options)
{
    command.add_option("NAME", options.name, "The user's name")->required();
    addPasswordOption(command, options);
}

// ---- Adding them ------------------------------------------------------------------------------

constexpr auto kActions = std::to_array<Action<Options>>({
    {"list", "List the names of all accounts, one per line", listUsers,
     "Examples:\n"
     "  vokctl users list          one name per line\n"
     "  vokctl users list --json   for programs",
     addJson},
    {"create", "Create an account", createUser,
     "Examples:\n"
     "  vokctl users create carla            asks for the password, twice\n"
     "  vokctl users create carla <secret    takes a file's first line as password\n"
     "\n"
     "A password is never given on the command line, where others could read it.",
     addNewName},
    {"verify", "Check a user's password", verifyUser,
     "Examples:\n"
     "  vokctl users verify carla            asks for the password\n"
     "  vokctl users verify carla <secret    takes a file's first line as password\n"
     "\n"
     "Ends with 0 if the password is right, and with 1 if it is wrong or if there is no\n"
     "such user: the appliance answers both in the same way.",
     addName},
});

} // namespace

void buildUsersCommand(CLI::App& users)
{
    addActions<Options>(users, kActions);
}

} // namespace client
