// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <iostream>

#include "client/commands.h"
#include "client/exchange.h"
#include "client/failure.h"
#include "client/numbers.h"
#include "client/status_report.h"
#include "client/subcommands.h"
#include "core/bytes.h"
#include "text/translation.h"
#include "view/share_folders.h"
#include "view/share_row.h"
#include "view/terminal_text.h"

namespace client {
namespace {

using text::fill;
using text::tr;

struct Options {
    Connection connection;
    std::string user;
    unsigned state = 0;
    bool asVariable = false;
    bool json = false;
};

// ---- report -----------------------------------------------------------------------------------

/// The byte beside a state; the appliance ignores it.
constexpr char kIgnored = ' ';

/// A report for the variable file. All of it is in the first line: an ignored byte, the state, and
/// the name.
Request makeVariableReport(const Options& options)
{
    // The user's name is also the share's.
    constexpr std::size_t kLongestName = cmdsvc::kLongestShareName;
    if (options.user.empty() || options.user.size() > kLongestName) {
        throw Failure(kWrongUsage, fill(tr("with --as-variable a user's name has 1 to {} bytes"),
                                        {std::to_string(kLongestName)}));
    }
    if (options.state == '\n') {
        throw Failure(kWrongUsage,
                      tr("with --as-variable the state cannot be 10, because that byte ends the "
                         "line"));
    }
    const auto state = static_cast<char>(options.state);
    return {cmdsvc::command("subs"), {std::string{kIgnored, state} + options.user}};
}

Request makeFileReport(const Options& options)
{
    return {cmdsvc::command("sub1"), {options.state, std::uint32_t{kIgnored}, options.user}};
}

/// Whether no share has a user's name; false if that is not known. The appliance drops backslashes.
bool isNoShare(std::string user)
{
    std::erase(user, '\\');
    const std::optional<std::vector<std::string>> shares = view::listShareFolders();
    return shares && std::ranges::find(*shares, user) == shares->end();
}

void report(const Options& options)
{
    askToDo(options.connection,
            options.asVariable ? makeVariableReport(options) : makeFileReport(options));
    std::cerr << "vokctl: " << tr("the report was stored") << "\n";
    if (!options.asVariable && isNoShare(options.user)) {
        std::cerr << "vokctl: "
                  << fill(tr("warning: there is no share {}, so no collection reads this report"),
                          {view::makePrintable(options.user).text})
                  << "\n";
    }
}

void addReportOptions(CLI::App& command, Options& options)
{
    command.add_option("USER", options.user, "The user's name, which is also the share's")
        ->required();
    command
        .add_option("--state", options.state,
                    "The state, 0 to 255; the appliance keeps only its first digit")
        ->required()
        ->type_name("N")
        ->check(numberFrom("--state", 0, 255));
    command.add_flag("--as-variable", options.asVariable,
                     "Store it as a variable, not in the file that collections read");
}

// ---- list -------------------------------------------------------------------------------------

struct BackupTable {
    std::uint16_t capacity = 0;
    std::vector<view::ShareRow> shares;
};

BackupTable fetchTable(const Connection& connection)
{
    constexpr std::size_t kCapacityOffset = 7;
    const Request request = {cmdsvc::command("gub1")};
    const std::string payload =
        std::string(request.command.answer.tag) + askForBytes(connection, request);
    if (payload.size() < cmdsvc::kHeaderSize) {
        failUnreadable(request, {});
    }
    std::optional<std::vector<view::ShareRow>> shares = view::readRecords(payload);
    if (!shares) {
        failUnreadable(request, {});
    }
    return {core::getU16(std::span(payload).subspan<kCapacityOffset, 2>()), std::move(*shares)};
}

void list(const Options& options)
{
    const BackupTable table = fetchTable(options.connection);
    if (options.json) {
        std::cout << renderJson(
            Json{{"capacity_gb", table.capacity}, {"shares", makeJson(table.shares)}});
    } else if (!table.shares.empty()) {
        std::cout << renderShares(table.shares, config::read(options.connection.file)) << "\n"
                  << fill(tr("The internal disk has {} GB."), {std::to_string(table.capacity)})
                  << "\n";
    }
    if (table.shares.empty()) {
        throw Failure(kNoData, tr("no share status has been published yet; start a collection with "
                                  "\"vokctl collect\", then try again"));
    }
}

// ---- Adding them ------------------------------------------------------------------------------

constexpr auto kActions = std::to_array<Action<Options>>({
    {"report", "Report how a user's backup went", report,
     "Examples:\n"
     "  vokctl backup report anna --state 1\n"
     "  vokctl collect --wait 60 && vokctl status   shows it",
     addReportOptions},
    {"list", "Show every share's space and last backup, and the disk's capacity", list,
     "Examples:\n"
     "  vokctl backup list\n"
     "  vokctl backup list --json\n"
     "\n"
     "This takes a while, because the appliance traces each byte of its answer. Ends\n"
     "with 6 if there is no share status.",
     addJson},
});

} // namespace

void buildBackupCommand(CLI::App& backup)
{
    addActions<Options>(backup, kActions);
}

} // namespace client
