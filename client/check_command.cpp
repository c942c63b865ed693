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

namespace client {
namespace {

struct CheckOptions {
    std::string file = config::kDefaultFile;
    std::optional<unsigned> full;
    std::optional<unsigned> backupAge;
    std::optional<unsigned> stale;
};

/// What the command line says wins over the file.
config::Configuration readSettings(const CheckOptions& options)
{
    config::Configuration settings = config::read(options.file);
    settings.fullWarning = options.full.value_or(settings.fullWarning);
    settings.fullCritical = std::max(settings.fullWarning, settings.fullCritical);
    settings.backupAge = options.backupAge.value_or(settings.backupAge);
    settings.stale = options.stale.value_or(settings.stale);
    return settings;
}

/// To a monitoring system whatever fails is a state that is not known.
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
    command.add_option("--full", options->full, "Warn if the disk is so full or fuller")
        ->type_name("PERCENT")
        ->check(CLI::Range(1U, 100U));
    command.add_option("--backup-age", options->backupAge, "Warn if a backup is older than this")
        ->type_name("DAYS")
        ->check(CLI::Range(0U, 3650U));
    command.add_option("--stale", options->stale, "Warn if the status is older than this")
        ->type_name("HOURS")
        ->check(CLI::Range(0U, 8760U));
    command.add_option("--config", options->file, "Where the settings are read")
        ->type_name("PATH")
        ->capture_default_str();
    command.footer(
        "Examples:\n"
        "  vokctl check\n"
        "  vokctl check --full 80 --backup-age 2 --stale 26\n"
        "\n"
        "One line, with figures after a bar, and an exit code as monitoring plug-ins\n"
        "have them: 0 all is well, 1 warning, 2 critical, 3 not known. What is critical,\n"
        "and the thresholds without options, the settings say.");
    command.callback([options] { runCheck(*options); });
}

} // namespace client
