// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <ctime>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <unistd.h>
#include <vector>

#include "client/commands.h"
#include "client/doctor.h"
#include "client/doctor_report.h"
#include "client/failure.h"
#include "client/numbers.h"
#include "text/translation.h"
#include "view/terminal_text.h"

namespace client {
namespace {

struct DoctorOptions {
    Surroundings surroundings;
    std::optional<std::string> socket;
    std::vector<std::string> names;
    bool json = false;
    bool isList = false;
};

/// A folder for answers, which goes with all that is in it.
class AnswerFolder {
  public:
    AnswerFolder() : path_("/tmp/vokctl-doctor.XXXXXX")
    {
        if (::mkdtemp(path_.data()) == nullptr) {
            path_.clear();
        }
    }
    ~AnswerFolder()
    {
        std::error_code ignored;
        if (!path_.empty()) {
            std::filesystem::remove_all(path_, ignored);
        }
    }
    AnswerFolder(const AnswerFolder&) = delete;
    AnswerFolder& operator=(const AnswerFolder&) = delete;

    [[nodiscard]] const std::string& path() const { return path_; }

  private:
    std::string path_;
};

/// Settings that cannot be read are what a check says; the others go by the defaults.
config::Configuration readSettings(const std::string& file)
{
    try {
        return config::read(file);
    } catch (const config::BadConfiguration&) {
        return {};
    }
}

void checkNames(const std::vector<std::string>& names)
{
    for (const std::string& name : names) {
        if (std::ranges::find(checks(), name, &Check::name) == checks().end()) {
            throw Failure(kWrongUsage,
                          text::fill(text::tr("there is no check {}; vokctl doctor --list names "
                                              "all"),
                                     {view::makePrintable(name).text}));
        }
    }
}

void listChecks()
{
    for (const Check& check : checks()) {
        std::cout << check.name << "\n";
    }
}

void runDoctor(const DoctorOptions& options)
{
    if (options.isList) {
        return listChecks();
    }
    checkNames(options.names);
    const AnswerFolder folder;
    Surroundings surroundings = options.surroundings;
    surroundings.settings = readSettings(surroundings.settingsFile);
    surroundings.settings.socket = options.socket.value_or(surroundings.settings.socket);
    surroundings.folder = folder.path();
    surroundings.isRoot = ::geteuid() == 0;
    surroundings.now = std::time(nullptr);
    const std::vector<Result> results = runChecks(surroundings, checks(), options.names);
    std::cout << (options.json ? renderDoctorJson(results) : renderDoctorText(results));
    if (const ExitCode code = exitCodeOf(results); code != kGood) {
        throw ExitWith{code};
    }
}

} // namespace

void buildDoctorCommand(CLI::App& command)
{
    const auto options = std::make_shared<DoctorOptions>();
    command.add_option("CHECK", options->names, "Only these checks; all without");
    command.add_flag("--list", options->isList, "Name the checks, one a line");
    command.add_flag("--json", options->json, "Print JSON for programs");
    command.add_option("--socket", options->socket, "Where the service listens")
        ->type_name("PATH")
        ->default_str(config::Configuration().socket);
    command
        .add_option("--timeout", options->surroundings.seconds, "Give each check at most so long")
        ->type_name("SECONDS")
        ->check(numberFrom("--timeout", 1, 3600))
        ->capture_default_str();
    command
        .add_option("--config", options->surroundings.settingsFile, "Where the settings are read")
        ->type_name("PATH")
        ->capture_default_str();
    command.footer(
        "Examples:\n"
        "  vokctl doctor                  everything that the module needs\n"
        "  vokctl doctor php fdisk        whether these two are mended now\n"
        "  vokctl doctor --json           for programs\n"
        "\n"
        "One line a check: ok, WRONG, \"-\" if the appliance does without, \"?\" if it could\n"
        "not be checked; then why, and what to do. It asks programs and scripts as the\n"
        "service would, and changes nothing. Only root can check all of it. Ends with 0\n"
        "if nothing is wrong, with 1 if something is.");
    command.callback([options] { runDoctor(*options); });
}

} // namespace client
