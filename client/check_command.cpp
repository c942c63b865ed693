// SPDX-License-Identifier: MIT
#include <algorithm>
#include <exception>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "client/check_report.h"
#include "client/commands.h"
#include "client/failure.h"
#include "client/numbers.h"

namespace client {
namespace {

struct CheckOptions {
    std::string file = config::kDefaultFile;
    std::optional<unsigned> full;
    std::optional<unsigned> backupAge;
    std::optional<unsigned> stale;
};

/// Takes the thresholds from the command line, and the others from the file.
config::Configuration readSettings(const CheckOptions& options)
{
    config::Configuration settings = config::read(options.file);
    settings.fullWarning = options.full.value_or(settings.fullWarning);
    settings.fullCritical = std::max(settings.fullWarning, settings.fullCritical);
    settings.backupAge = options.backupAge.value_or(settings.backupAge);
    settings.stale = options.stale.value_or(settings.stale);
    return settings;
}

/// Every failure is an unknown state for a monitoring system.
CheckReport check(const CheckOptions& options)
{
    try {
        return renderCheck(view::readSituation(), readSettings(options));
    } catch (const std::exception& failure) {
        return renderUnknown(failure.what());
    }
}

void runCheck(const CheckOptions& options)
{
    const CheckReport report = check(options);
    std::cout << report.line;
    throw ExitWith{report.code};
}

} // namespace

void buildCheckCommand(CLI::App& command)
{
    const auto options = std::make_shared<CheckOptions>();
    command.add_option("--full", options->full, "Warn if at least this much of the disk is used")
        ->type_name("PERCENT")
        ->check(numberFrom("--full", 1, 100));
    command.add_option("--backup-age", options->backupAge, "Warn if a backup is older than this")
        ->type_name("DAYS")
        ->check(numberFrom("--backup-age", 0, 3650));
    command.add_option("--stale", options->stale, "Warn if the status is older than this")
        ->type_name("HOURS")
        ->check(numberFrom("--stale", 0, 8760));
    command.add_option("--config", options->file, "The file with the settings")
        ->type_name("PATH")
        ->capture_default_str();
    command.footer(
        "Examples:\n"
        "  vokctl check\n"
        "  vokctl check --full 80 --backup-age 2 --stale 26\n"
        "\n"
        "Prints one line, with figures after a bar, and ends with the exit code of a\n"
        "monitoring plug-in: 0 all is well, 1 warning, 2 critical, 3 not known. Options\n"
        "that are not given, and what is critical, are in the settings.");
    command.callback([options] { runCheck(*options); });
}

} // namespace client
