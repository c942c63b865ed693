// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <iostream>

#include "client/commands.h"
#include "client/exchange.h"
#include "client/failure.h"
#include "client/json_text.h"
#include "client/lists.h"
#include "client/subcommands.h"
#include "client/text_table.h"
#include "text/translation.h"
#include "view/terminal_text.h"

namespace client {
namespace {

using text::fill;
using text::tr;
using text::trc;

struct Options {
    Connection connection;
    std::string name;
    std::string user;
    bool isPublic = false;
    bool json = false;
};

Json toJson(const Share& share)
{
    return {{"name", share.name}, {"property", share.property}};
}

// ---- list -------------------------------------------------------------------------------------

std::string renderText(const std::vector<Share>& shares)
{
    constexpr std::array kColumns = {Align::kLeft, Align::kLeft};
    std::vector<TableRow> rows = {{view::makePrintable(trc("heading", "SHARE")),
                                   view::makePrintable(trc("heading", "PROPERTY"))}};
    for (const Share& share : shares) {
        rows.push_back({view::makePrintable(share.name), view::makePrintable(share.property)});
    }
    return layOutTable(kColumns, rows);
}

void listShares(const Options& options)
{
    const std::vector<Share> shares = fetchShares(options.connection).shares;
    Json json;
    json["shares"] = Json::array();
    std::ranges::transform(shares, std::back_inserter(json["shares"]), toJson);
    std::cout << (options.json ? renderJson(json) : renderText(shares));
}

// ---- show -------------------------------------------------------------------------------------

/// Whether the appliance has a share whose name contains this one.
bool mayExist(const Options& options)
{
    constexpr char kNone = 3;
    const Request request = {cmdsvc::command("gsp1"), {options.name}};
    const auto [answer, lines] = askForLines(options.connection, request);
    if (lines.size() != 1 || lines[0].size() != 1) {
        failUnreadable(request, answer);
    }
    return lines[0][0] != kNone;
}

/// The share with exactly this name: the function above also finds longer names.
Share findShare(const Options& options)
{
    if (mayExist(options)) {
        const ShareList list = fetchShares(options.connection);
        for (const Share& share : list.shares) {
            if (share.name == options.name) {
                return share;
            }
        }
    }
    throw Failure(kRefused,
                  fill(tr("there is no share {}; \"vokctl shares list\" shows all shares"),
                       {view::makePrintable(options.name).text}));
}

void showShare(const Options& options)
{
    const Share share = findShare(options);
    std::cout << (options.json ? renderJson(toJson(share))
                               : view::makePrintable(share.property).text + "\n");
}

// ---- public-name ------------------------------------------------------------------------------

void showPublicName(const Options& options)
{
    const std::string name = fetchPublicName(options.connection);
    if (name.empty()) {
        throw Failure(kNoData, tr("the appliance has no name for its public share"));
    }
    std::cout << view::makePrintable(name).text << "\n";
}

// ---- create -----------------------------------------------------------------------------------

Request makeCreation(const Options& options)
{
    if (options.isPublic) {
        return {cmdsvc::command("pshr"), {"guest", options.name}};
    }
    return {cmdsvc::command("shar"), {options.user, options.name}};
}

void createShare(const Options& options)
{
    if (options.isPublic != options.user.empty()) {
        throw Failure(kWrongUsage, tr("say for whom the share is: either --public or --for USER"));
    }
    askToDo(options.connection, makeCreation(options));
    std::cerr << "vokctl: "
              << fill(tr("the share {} was created"), {view::makePrintable(options.name).text})
              << "\n";
}

// ---- Adding them ------------------------------------------------------------------------------

void addNameAndJson(CLI::App& command, Options& options)
{
    command.add_option("NAME", options.name, "The share's name")->required();
    addJson(command, options);
}

void addNameAndOwner(CLI::App& command, Options& options)
{
    constexpr std::size_t kLongest = cmdsvc::parameter("shar", "share").limit.longest;
    command
        .add_option("NAME", options.name,
                    "The share's name, at most " + std::to_string(kLongest) + " bytes")
        ->required();
    CLI::Option_group* owner = command.add_option_group("For whom; one of these");
    owner->add_flag("--public", options.isPublic, "For everybody");
    owner->add_option("--for", options.user, "Only for this user")->type_name("USER");
}

constexpr auto kActions = std::to_array<Action<Options>>({
    {"list", "List all shares and whether they are public", listShares,
     "Examples:\n"
     "  vokctl shares list          a table\n"
     "  vokctl shares list --json   for programs",
     addJson},
    {"show", "Show whether a share is public or private", showShare,
     "Examples:\n"
     "  vokctl shares show 'Family Videos'\n"
     "\n"
     "Ends with 1 if there is no such share.",
     addNameAndJson},
    {"public-name", "Show the name of the public share", showPublicName,
     "Examples:\n"
     "  vokctl shares public-name\n"
     "\n"
     "Ends with 6 if the appliance has no such name."},
    {"create", "Create a share for everybody or for a user", createShare,
     "Examples:\n"
     "  vokctl shares create Music --public\n"
     "  vokctl shares create 'Tax papers' --for anna",
     addNameAndOwner},
});

} // namespace

void buildSharesCommand(CLI::App& shares)
{
    addActions<Options>(shares, kActions);
}

} // namespace client
