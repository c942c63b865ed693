// SPDX-License-Identifier: MIT
//
// commands.h: the subcommands of vokctl. Each function adds the options, the help and the action of
// one; a command that fails throws a Failure.
#pragma once

#include <CLI/CLI.hpp>
#include <array>

namespace client {

/// "vokctl status": the published share status.
void buildStatusCommand(CLI::App& command);

/// "vokctl history": what was, and what will be.
void buildHistoryCommand(CLI::App& command);

/// "vokctl check": one line and an exit code for a monitoring system.
void buildCheckCommand(CLI::App& command);

/// "vokctl metrics": figures for Prometheus.
void buildMetricsCommand(CLI::App& command);

/// "vokctl doctor": whether the appliance provides what the module needs.
void buildDoctorCommand(CLI::App& command);

/// "vokctl notify": tells people of a new judgement.
void buildNotifyCommand(CLI::App& command);

/// "vokctl collect": measures the shares; "vokctl service restart" does the same.
void buildCollectCommand(CLI::App& command);

/// "vokctl shares": lists and creates shares.
void buildSharesCommand(CLI::App& command);

/// "vokctl users": lists, creates and checks accounts.
void buildUsersCommand(CLI::App& command);

/// "vokctl backup": what backup clients report.
void buildBackupCommand(CLI::App& command);

/// "vokctl drives": the appliance's disks.
void buildDrivesCommand(CLI::App& command);

/// "vokctl host": the appliance's names, its clock and its language.
void buildHostCommand(CLI::App& command);

/// "vokctl version": the appliance's build.
void buildVersionCommand(CLI::App& command);

/// "vokctl private": the private file that clients keep on the appliance.
void buildPrivateCommand(CLI::App& command);

/// "vokctl setup": whether the first setup is pending, and the language.
void buildSetupCommand(CLI::App& command);

/// "vokctl remote": access to the appliance from outside.
void buildRemoteCommand(CLI::App& command);

/// "vokctl service restart": an older name of "vokctl collect".
void buildServiceCommand(CLI::App& command);

/// "vokctl raw": any request.
void buildRawCommand(CLI::App& command);

struct Subcommand {
    const char* name;
    const char* purpose; ///< its line in the help of the whole program
    void (*build)(CLI::App& command);
};

/// In the order of the help.
inline constexpr auto kSubcommands = std::to_array<Subcommand>({
    {"status", "Show the disk, every share and what needs attention", buildStatusCommand},
    {"check", "Say in one line and an exit code whether all is well", buildCheckCommand},
    {"history", "Show how space has changed, and when the disk will be full", buildHistoryCommand},
    {"metrics", "Print figures for Prometheus", buildMetricsCommand},
    {"doctor", "Find out what is wrong with the appliance, and say what to do", buildDoctorCommand},
    {"notify", "Run programs that tell people of a new judgement", buildNotifyCommand},
    {"collect", "Measure the shares and publish their status", buildCollectCommand},
    {"shares", "The appliance's shares", buildSharesCommand},
    {"users", "The appliance's accounts", buildUsersCommand},
    {"backup", "What backup clients report", buildBackupCommand},
    {"drives", "The appliance's disks", buildDrivesCommand},
    {"host", "The appliance's names, clock and language", buildHostCommand},
    {"version", "Show the appliance's build", buildVersionCommand},
    {"private", "The file that clients keep on the appliance", buildPrivateCommand},
    {"setup", "Whether the first setup is pending, and the language", buildSetupCommand},
    {"remote", "Access to the appliance from outside", buildRemoteCommand},
    {"service", R"(An older name: "service restart" is "collect")", buildServiceCommand},
    {"raw", "Send any request and show the bytes of the answer", buildRawCommand},
});

} // namespace client
