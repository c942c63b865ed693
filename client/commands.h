// SPDX-License-Identifier: MIT
//
// commands.h: the subcommands of vokctl. Each function gives one its options, its help and what it
// does; a command that does not succeed ends with a Failure.
#pragma once

#include <CLI/CLI.hpp>

namespace client {

/// "vokctl status": the published share status.
void buildStatusCommand(CLI::App& command);

/// "vokctl shares": what shares there are, and new ones.
void buildSharesCommand(CLI::App& command);

/// "vokctl users": the appliance's accounts, and new ones.
void buildUsersCommand(CLI::App& command);

/// "vokctl backup": what backup clients report.
void buildBackupCommand(CLI::App& command);

/// "vokctl drives": the appliance's disks.
void buildDrivesCommand(CLI::App& command);

/// "vokctl host": the appliance's names, its clock and its language.
void buildHostCommand(CLI::App& command);

/// "vokctl version": what build runs on the appliance.
void buildVersionCommand(CLI::App& command);

/// "vokctl private": the private file that clients keep on the appliance.
void buildPrivateCommand(CLI::App& command);

/// "vokctl setup": what a setup program asks first.
void buildSetupCommand(CLI::App& command);

/// "vokctl remote": reaching the appliance from outside.
void buildRemoteCommand(CLI::App& command);

/// "vokctl service": the service that collects the share status.
void buildServiceCommand(CLI::App& command);

/// "vokctl raw": any request at all.
void buildRawCommand(CLI::App& command);

} // namespace client
