// SPDX-License-Identifier: MIT
#include "client/users_command.h"

#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "client/answer.h"
#include "client/request.h"
#include "client/terminal_text.h"

namespace client {
namespace {

struct ListOptions {
    Connection connection;
    bool json = false;
};

std::string renderText(const std::vector<std::string>& users)
{
    std::string text;
    for (const std::string& user : users) {
        text += makePrintable(user).text + "\n";
    }
    return text;
}

std::string renderJson(const std::vector<std::string>& users)
{
    using Json = nlohmann::ordered_json;
    Json json;
    json["users"] = users;
    return json.dump(2, ' ', true, Json::error_handler_t::replace) + "\n";
}

ExitCode complain(ExitCode code, const std::string& complaint)
{
    std::cerr << "vokctl: " << complaint << "\n";
    return code;
}

ExitCode listUsers(const ListOptions& options)
{
    const Reply reply = sendRequest(options.connection, makeFrame("lstu", 0));
    if (reply.code != kGood) {
        return complain(reply.code, reply.complaint);
    }
    const Answer answer = readAnswer(reply.bytes);
    if (answer.shape == Shape::kError || answer.shape == Shape::kWord) {
        return complain(kRefused, explainStatus(answer.value));
    }
    if (answer.trailingError) {
        return complain(kRefused, explainStatus(*answer.trailingError));
    }
    if (answer.shape != Shape::kHeader || answer.tag != "lsut" ||
        answer.lines.size() != answer.value) {
        return complain(kUnreadableAnswer, "the answer cannot be read; it is " +
                                               describeAnswer(answer));
    }
    std::cout << (options.json ? renderJson(answer.lines) : renderText(answer.lines));
    return kGood;
}

} // namespace

void addUsersCommand(CLI::App& program, int& exitCode)
{
    CLI::App* users = program.add_subcommand("users", "The appliance's accounts");
    users->require_subcommand(1);
    CLI::App* list = users->add_subcommand("list", "List the names of all accounts, one a line");
    const auto options = std::make_shared<ListOptions>();
    list->add_flag("--json", options->json, "Print JSON for programs");
    addConnectionOptions(*list, options->connection);
    list->footer("Examples:\n"
                 "  vokctl users list          one name a line\n"
                 "  vokctl users list --json   for programs");
    list->callback([options, &exitCode] { exitCode = listUsers(*options); });
}

} // namespace client
