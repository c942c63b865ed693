// SPDX-License-Identifier: MIT
#include <iostream>
#include <memory>

#include "client/commands.h"
#include "client/exchange.h"
#include "client/failure.h"
#include "client/status_report.h"
#include "core/bytes.h"
#include "view/share_row.h"

namespace client {
namespace {

// ---- report -----------------------------------------------------------------------------------

struct ReportOptions {
    Connection connection;
    std::string user;
    unsigned state = 0;
    bool asVariable = false;
};

/// The appliance does not look at the byte that stands beside a state.
constexpr char kIgnored = ' ';

/// A report for the variable file. Everything stands in the first line; a byte that is not looked
/// at and the state come before the name.
Request makeVariableReport(const ReportOptions& options)
{
    // The user's name is also the share's.
    constexpr std::size_t kLongestName = cmdsvc::kLongestShareName;
    if (options.user.empty() || options.user.size() > kLongestName) {
        throw Failure(kWrongUsage, "with --as-variable a user's name has 1 to " +
                                       std::to_string(kLongestName) + " bytes");
    }
    if (options.state == '\n') {
        throw Failure(kWrongUsage,
                      "with --as-variable the state 10 cannot be told from the line's end");
    }
    const auto state = static_cast<char>(options.state);
    return {cmdsvc::command("subs"), {std::string{kIgnored, state} + options.user}};
}

Request makeFileReport(const ReportOptions& options)
{
    return {cmdsvc::command("sub1"), {options.state, std::uint32_t{kIgnored}, options.user}};
}

void report(const ReportOptions& options)
{
    askToDo(options.connection,
            options.asVariable ? makeVariableReport(options) : makeFileReport(options));
    std::cerr << "vokctl: the report was kept\n";
}

void addReport(CLI::App& backup)
{
    const auto options = std::make_shared<ReportOptions>();
    CLI::App* command = backup.add_subcommand("report", "Report how a user's backup went");
    command->add_option("USER", options->user, "The user's name, which is also the share's")
        ->required();
    command
        ->add_option("--state", options->state,
                     "The state, 0 to 255; of its digits the appliance keeps the first")
        ->required()
        ->type_name("N")
        ->check(CLI::Range(0U, 255U));
    command->add_flag("--as-variable", options->asVariable,
                      "Keep it as a variable, not as the file that the collection reads");
    addConnectionOptions(*command, options->connection);
    command->footer("Examples:\n"
                    "  vokctl backup report anna --state 1\n"
                    "  vokctl service restart; vokctl status --wait 60   shows it");
    command->callback([options] { report(*options); });
}

// ---- list -------------------------------------------------------------------------------------

struct ListOptions {
    Connection connection;
    bool json = false;
};

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

void list(const ListOptions& options)
{
    const BackupTable table = fetchTable(options.connection);
    if (options.json) {
        Json json;
        json["capacity_gb"] = table.capacity;
        json["shares"] = makeJson(table.shares);
        std::cout << renderJson(json);
    } else if (!table.shares.empty()) {
        std::cout << renderShares(table.shares) << "\nThe internal disk holds " << table.capacity
                  << " GB.\n";
    }
    if (table.shares.empty()) {
        throw Failure(kNoData, "the appliance has no share status yet; try again in a minute");
    }
}

void addList(CLI::App& backup)
{
    const auto options = std::make_shared<ListOptions>();
    CLI::App* command = backup.add_subcommand(
        "list", "Show every share's space and last backup, and the disk's capacity");
    command->add_flag("--json", options->json, "Print JSON for programs");
    addConnectionOptions(*command, options->connection);
    command->footer(
        "Examples:\n"
        "  vokctl backup list\n"
        "  vokctl backup list --json\n"
        "\n"
        "It takes the appliance a while: it traces every byte of its answer. Ends with\n"
        "6 when there is no share status.");
    command->callback([options] { list(*options); });
}

} // namespace

void buildBackupCommand(CLI::App& backup)
{
    backup.require_subcommand(1);
    addReport(backup);
    addList(backup);
}

} // namespace client
