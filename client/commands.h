// SPDX-License-Identifier: MIT
//
// commands.h: the subcommands of vokctl. Each function adds one, with its options, its help and
// what it does; a command that does not succeed ends with a Failure.
#pragma once

#include <CLI/CLI.hpp>

namespace client {

/// "vokctl status": the published share status.
void addStatusCommand(CLI::App& program);

/// "vokctl shares": what shares there are, and new ones.
void addSharesCommand(CLI::App& program);

/// "vokctl users": the appliance's accounts, and new ones.
void addUsersCommand(CLI::App& program);

/// "vokctl backup": what backup clients report.
void addBackupCommand(CLI::App& program);

/// "vokctl drives": the appliance's disks.
void addDrivesCommand(CLI::App& program);

/// "vokctl host": the appliance's names, its clock and its language.
void addHostCommand(CLI::App& program);

/// "vokctl version": what build runs on the appliance.
void addVersionCommand(CLI::App& program);

/// "vokctl private": the private file that clients keep on the appliance.
void addPrivateCommand(CLI::App& program);

/// "vokctl setup": what a setup program asks first.
void addSetupCommand(CLI::App& program);

/// "vokctl remote": reaching the appliance from outside.
void addRemoteCommand(CLI::App& program);

/// "vokctl service": the service that collects the share status.
void addServiceCommand(CLI::App& program);

/// "vokctl raw": any request at all.
void addRawCommand(CLI::App& program);

} // namespace client
