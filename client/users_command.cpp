// SPDX-License-Identifier: MIT
#include <iostream>
#include <memory>

#include "client/commands.h"
#include "client/exchange.h"
#include "client/failure.h"
#include "client/json_text.h"
#include "client/password.h"
#include "view/terminal_text.h"

namespace client {
namespace {

// ---- list -------------------------------------------------------------------------------------

struct ListOptions {
    Connection connection;
    bool json = false;
};

std::string renderText(const std::vector<std::string>& users)
{
    std::string text;
    for (const std::string& user : users) {
        text += view::makePrintable(user).text + "\n";
    }
    return text;
}

void listUsers(const ListOptions& options)
{
    const Request request = {cmdsvc::command("lstu")};
    const auto [answer, lines] = askForLines(options.connection, request);
    if (lines.size() != answer.count) {
        failUnreadable(request, answer);
    }
    Json json;
    json["users"] = lines;
    std::cout << (options.json ? renderJson(json) : renderText(lines));
}

void addList(CLI::App& users)
{
    const auto options = std::make_shared<ListOptions>();
    CLI::App* list = users.add_subcommand("list", "List the names of all accounts, one a line");
    list->add_flag("--json", options->json, "Print JSON for programs");
    addConnectionOptions(*list, options->connection);
    list->footer("Examples:\n"
                 "  vokctl users list          one name a line\n"
                 "  vokctl users list --json   for programs");
    list->callback([options] { listUsers(*options); });
}

// ---- create -----------------------------------------------------------------------------------

struct AccountOptions {
    Connection connection;
    std::string name;
};

void createUser(const AccountOptions& options)
{
    // Before anybody types a password for it.
    checkedLine(options.name);
    askToDo(options.connection, {cmdsvc::command("crat"), {options.name, readNewPassword()}});
    std::cerr << "vokctl: the user " << view::makePrintable(options.name).text << " was created\n";
}

void addCreate(CLI::App& users)
{
    const auto options = std::make_shared<AccountOptions>();
    CLI::App* create = users.add_subcommand("create", "Create an account");
    constexpr std::size_t kLongest = cmdsvc::parameter("crat", "user").limit.longest;
    create
        ->add_option("NAME", options->name,
                     "The user's name, at most " + std::to_string(kLongest) + " bytes")
        ->required();
    addConnectionOptions(*create, options->connection);
    create->footer("Examples:\n"
                   "  vokctl users create carla            asks for the password, twice\n"
                   "  vokctl users create carla <secret    takes a file's first line as password\n"
                   "\n"
                   "A password never stands on the command line, where others could read it.");
    create->callback([options] { createUser(*options); });
}

// ---- verify -----------------------------------------------------------------------------------

void verifyUser(const AccountOptions& options)
{
    checkedLine(options.name);
    const Request request = {cmdsvc::command("wall"), {options.name, readPassword()}};
    if (!askForBytes(options.connection, request, "\n").empty()) {
        throw Failure(kUnreadableAnswer, "the answer is longer than it can be");
    }
    std::cerr << "vokctl: the password is right\n";
}

void addVerify(CLI::App& users)
{
    const auto options = std::make_shared<AccountOptions>();
    CLI::App* verify = users.add_subcommand("verify", "Check a user's password");
    verify->add_option("NAME", options->name, "The user's name")->required();
    addConnectionOptions(*verify, options->connection);
    verify->footer(
        "Examples:\n"
        "  vokctl users verify carla            asks for the password\n"
        "  vokctl users verify carla <secret    takes a file's first line as password\n"
        "\n"
        "Ends with 0 when the password is right and with 1 when it is not. The appliance\n"
        "does not tell a wrong password from an unknown user.");
    verify->callback([options] { verifyUser(*options); });
}

} // namespace

void buildUsersCommand(CLI::App& users)
{
    users.require_subcommand(1);
    addList(users);
    addCreate(users);
    addVerify(users);
}

} // namespace client
