// SPDX-License-Identifier: MIT
#include <array>
#include <iostream>

#include "client/commands.h"
#include "client/exchange.h"
#include "client/failure.h"
#include "client/json_text.h"
#include "client/subcommands.h"
#include "client/text_table.h"
#include "text/translation.h"
#include "view/terminal_text.h"

namespace client {
namespace {

using text::fill;
using text::tr;

struct Options {
    Connection connection;
    std::string user;
    std::string first;
    std::string second;
    bool json = false;
};

// ---- urls -------------------------------------------------------------------------------------

std::string fetchValue(const Connection& connection, std::uint32_t key)
{
    const Request request = {cmdsvc::command("getv"), {key}};
    std::string value = askForBytes(connection, request, wordBytes(key) + "\n");
    if (!value.ends_with('\n')) {
        failUnreadable(request, {});
    }
    value.pop_back();
    return value;
}

void showUrls(const Options& options)
{
    const std::string signUp = fetchValue(options.connection, 1);
    const std::string signIn = fetchValue(options.connection, 2);
    if (options.json) {
        std::cout << renderJson({{"sign_up", signUp}, {"sign_in", signIn}});
        return;
    }
    constexpr auto kColumns = std::to_array<Align>({Align::kLeft, Align::kLeft});
    std::cout << layOutTable(kColumns,
                             {{view::makePrintable(tr("Sign up:")), view::makePrintable(signUp)},
                              {view::makePrintable(tr("Sign in:")), view::makePrintable(signIn)}});
}

// ---- Names and values -------------------------------------------------------------------------

/// The longest line of the strictest of these commands, without newline and terminator. The rest of
/// a longer line would be the next line.
constexpr std::size_t kLongestText = cmdsvc::parameter("warp", "user").room - 2;

const std::string& remoteText(const std::string& text)
{
    if (text.size() > kLongestText) {
        throw Failure(kWrongUsage, fill(tr("a name or a value has more than {} bytes"),
                                        {std::to_string(kLongestText)}));
    }
    return checkedLine(text);
}

// ---- status -----------------------------------------------------------------------------------

/// Whether remote access is on, in an answer.
constexpr std::string_view kOff("\0\n", 2);
constexpr std::string_view kOn("\1\n", 2);

bool isOn(const Options& options)
{
    const std::string entity = options.user.empty() ? "system" : "user";
    Request request = {cmdsvc::command("wags"), {entity}};
    if (!options.user.empty()) {
        request.values.emplace_back(remoteText(options.user));
    }
    const std::string flag = askForBytes(options.connection, request, entity + "\n");
    if (flag != kOff && flag != kOn) {
        failUnreadable(request, {});
    }
    return flag == kOn;
}

void showStatus(const Options& options)
{
    std::cout << (isOn(options) ? "on\n" : "off\n");
}

// ---- enable, disable, register ----------------------------------------------------------------

constexpr std::string_view kDone("\0\n\0\n", 4);

/// Sends a request and checks that it is done.
void askAndCheck(const Connection& connection, const Request& request)
{
    if (askForBytes(connection, request) != kDone) {
        failUnreadable(request, {});
    }
}

std::vector<Value> registration(const Options& options)
{
    return {remoteText(options.user), remoteText(options.first), remoteText(options.second)};
}

void registerUser(const Options& options)
{
    askAndCheck(options.connection, {cmdsvc::command("warp"), registration(options)});
    std::cerr << "vokctl: " << tr("the user was registered") << "\n";
}

void switchAccess(const Options& options, bool isWanted)
{
    Request request = {cmdsvc::command("wasu"), registration(options)};
    request.values.emplace_back(isWanted ? 1U : 0U);
    askAndCheck(options.connection, request);
    std::cerr << "vokctl: "
              << (isWanted ? tr("the user's remote access is on now")
                           : tr("the user's remote access is off now"))
              << "\n";
}

void enableAccess(const Options& options)
{
    switchAccess(options, true);
}

void disableAccess(const Options& options)
{
    switchAccess(options, false);
}

// ---- Adding them ------------------------------------------------------------------------------

void addUser(CLI::App& command, Options& options)
{
    command.add_option("USER", options.user, "The user's name on the appliance")->required();
}

void addUserOrNone(CLI::App& command, Options& options)
{
    command.add_option("USER", options.user, "The user's name; without it, the whole system");
}

void addRegistration(CLI::App& command, Options& options)
{
    addUser(command, options);
    command.add_option("FIRST", options.first, "The first value that the provider needs")
        ->required();
    command.add_option("SECOND", options.second, "The second value that the provider needs")
        ->required();
}

constexpr Action<Options> kUrls = {"urls", "Show where users sign up and sign in", showUrls,
                                   "Examples:\n"
                                   "  vokctl remote urls"};

constexpr auto kActions = std::to_array<Action<Options>>({
    {"status", "Show whether remote access is on, for all or for one user", showStatus,
     "Examples:\n"
     "  vokctl remote status\n"
     "  vokctl remote status anna",
     addUserOrNone},
    {"enable", "Switch a user's remote access on, by signing the user up", enableAccess,
     "Examples:\n"
     "  vokctl remote enable anna anna@example.org Anna",
     addRegistration},
    {"disable", "Switch a user's remote access off", disableAccess,
     "Examples:\n"
     "  vokctl remote disable anna",
     addUser},
    {"register", "Sign a user up with the provider of remote access", registerUser,
     "Examples:\n"
     "  vokctl remote register anna anna@example.org Anna",
     addRegistration},
});

} // namespace

void buildRemoteCommand(CLI::App& remote)
{
    // The help of this action lists "--json" after the options of the connection.
    Options& urls = addAction(remote, kUrls);
    addJson(*remote.get_subcommand(kUrls.name), urls);
    addActions<Options>(remote, kActions);
}

} // namespace client
