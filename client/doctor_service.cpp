// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <grp.h>
#include <string_view>
#include <sys/stat.h>

#include "client/connection.h"
#include "client/doctor_checks.h"
#include "client/doctor_program.h"
#include "client/exchange.h"
#include "client/failure.h"
#include "text/translation.h"
#include "view/file_start.h"
#include "view/judgement.h"
#include "view/processes.h"

namespace client {
namespace {

using text::fill;
using text::tr;
using text::trn;

constexpr const char* kInitScript = "/etc/init.d/vokcontrol";
constexpr const char* kInitSettings = "/etc/default/vokcontrol";
constexpr const char* kCollectorPid = "/run/vokcontrol-collect.pid";
constexpr const char* kTimer = "vokcontrol-collect.timer";
constexpr auto kUnits = std::to_array<const char*>(
    {"vokserve.socket", "vokcontrol-collect.timer", "vokcontrol-boot.service",
     "vokcontrol-history.path", "vokcontrol-notify.timer"});

bool isFolder(const char* path)
{
    struct stat status = {};
    return ::stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

bool isSystemdRunning()
{
    return isFolder("/run/systemd/system");
}

bool systemctl(const Surroundings& surroundings, const char* question, const char* unit)
{
    return runProgram(surroundings, {"systemctl", question, "--quiet", unit}).code == 0;
}

// ---- Without systemd --------------------------------------------------------------------------

/// How many seconds apart the init script's collections are: the last "interval=" of its settings.
unsigned collectionInterval()
{
    constexpr std::size_t kMost = 65536;
    constexpr std::string_view kName = "interval=";
    const std::string settings = "\n" + view::readFileStart(kInitSettings, kMost).bytes;
    unsigned seconds = 3600;
    const std::size_t at = settings.rfind("\n" + std::string(kName));
    if (at != std::string::npos) {
        const char* number = settings.data() + at + 1 + kName.size();
        std::from_chars(number, settings.data() + settings.size(), seconds);
    }
    return seconds;
}

/// Whether the process that starts collections runs.
bool isCollectingRegularly()
{
    constexpr std::size_t kMost = 16;
    const std::string text = view::readFileStart(kCollectorPid, kMost).bytes;
    int id = 0;
    std::from_chars(text.data(), text.data() + text.size(), id);
    const auto processes = view::listProcesses().all;
    return std::ranges::any_of(processes, [id](const view::Process& process) {
        return process.id == id &&
               std::ranges::any_of(process.command, [](const std::string& word) {
                   return word.find("vokcontrol") != std::string::npos;
               });
    });
}

Diagnosis examineInitTimer()
{
    const unsigned seconds = collectionInterval();
    if (seconds == 0) {
        return unneeded(fill(tr("No regular collections, as {} says."), {kInitSettings}));
    }
    return isCollectingRegularly()
               ? good(fill(trn("A collection starts every {} second.",
                               "A collection starts every {} seconds.", seconds),
                           {std::to_string(seconds)}))
               : wrong(tr("Nothing starts collections."),
                       fill(tr("{}, and see its log"), {std::string(kInitScript) + " restart"}));
}

// ---- The status -------------------------------------------------------------------------------

/// The finding of one of some kinds, if there is one.
const view::Finding* findKind(const std::vector<view::Finding>& findings,
                              std::initializer_list<std::string_view> kinds)
{
    const auto found = std::ranges::find_if(findings, [kinds](const view::Finding& finding) {
        return std::ranges::find(kinds, finding.kind) != kinds.end();
    });
    return (found != findings.end()) ? &*found : nullptr;
}

constexpr const char* kCollect = "vokctl collect --wait 600";

} // namespace

Diagnosis examineSettings(const Surroundings& surroundings, const Check& /*check*/)
{
    try {
        const config::Configuration settings = config::read(surroundings.settingsFile);
        return good(tr("They can be read."));
    } catch (const config::UntrustedConfiguration& failure) {
        const std::string& path = surroundings.settingsFile;
        return wrong(std::string(failure.what()) + ".",
                     "chown root " + path + "; chmod go-w " + path);
    } catch (const config::BadConfiguration& failure) {
        return wrong(std::string(failure.what()) + ".",
                     tr("correct it; vokcontrol.conf(5) says what it may contain"));
    }
}

Diagnosis examineGroup(const Surroundings& surroundings, const Check& /*check*/)
{
    for (const std::string& name : {surroundings.settings.group, surroundings.settings.viewGroup}) {
        if (::getgrnam(name.c_str()) == nullptr) {
            return wrong(
                fill(tr("There is no group {}, whose members may ask the service."), {name}),
                fill(tr("{}, then start the service anew"), {"groupadd --system " + name}));
        }
    }
    return good(fill(tr("There are {1} and {2}."),
                     {surroundings.settings.group, surroundings.settings.viewGroup}));
}

Diagnosis examineSocket(const Surroundings& surroundings, const Check& /*check*/)
{
    const char* start = tr("systemctl start vokserve.socket, or /etc/init.d/vokcontrol start");
    const std::string& path = surroundings.settings.socket;
    struct stat status = {};
    if (::lstat(path.c_str(), &status) != 0) {
        return wrong(describeMissing(path, errno), start);
    }
    if (!S_ISSOCK(status.st_mode)) {
        return wrong(fill(tr("{} is not a socket."), {path}),
                     fill(tr("remove it, then {}"), {start}));
    }
    if (status.st_uid != 0) {
        return wrong(fill(tr("{} does not belong to root."), {path}),
                     fill(tr("see who made it; remove it, then {}"), {start}));
    }
    return good(fill(tr("Its path is {}."), {path}));
}

Diagnosis examineService(const Surroundings& surroundings, const Check& /*check*/)
{
    // Before the check itself is over.
    const unsigned seconds = std::max(surroundings.seconds, 2U) - 1;
    const Connection connection = {.socket = surroundings.settings.socket,
                                   .timeout = seconds,
                                   .file = surroundings.settingsFile};
    try {
        const Listing build = askForLines(connection, {cmdsvc::command("vers")});
        return good(tr("It answers."));
    } catch (const Failure& failure) {
        if (failure.code() == kNotPermitted && !surroundings.isRoot) {
            return unchecked(tr("Not checked: this account may not ask."));
        }
        return wrong(fill(tr("It cannot be asked: {}"), {failure.what()}),
                     tr("see its log: journalctl -u vokserve, or /var/log/vokserve.log"));
    }
}

Diagnosis examineUnits(const Surroundings& surroundings, const Check& /*check*/)
{
    if (!isSystemdRunning()) {
        return findProgram(surroundings, kInitScript)
                   ? good(fill(tr("There is no systemd, but {}."), {kInitScript}))
                   : wrong(fill(tr("There is neither systemd nor a program {}."), {kInitScript}),
                           tr("copy the init script there; install.md says how"));
    }
    for (const char* unit : kUnits) {
        if (!systemctl(surroundings, "is-enabled", unit)) {
            return wrong(fill(tr("{} is not enabled."), {unit}),
                         std::string("systemctl enable --now ") + unit);
        }
        if (systemctl(surroundings, "is-failed", unit)) {
            return wrong(fill(tr("{} has failed."), {unit}),
                         fill(tr("{1}, then {2}"), {std::string("systemctl status ") + unit,
                                                    std::string("systemctl restart ") + unit}));
        }
    }
    return good(tr("They are enabled, and none has failed."));
}

Diagnosis examineTimer(const Surroundings& surroundings, const Check& /*check*/)
{
    if (!isSystemdRunning()) {
        return examineInitTimer();
    }
    return systemctl(surroundings, "is-active", kTimer)
               ? good(fill(tr("{} is active."), {kTimer}))
               : wrong(fill(tr("{} is not active, so that no collection starts."), {kTimer}),
                       std::string("systemctl start ") + kTimer);
}

Diagnosis examineStatus(const Surroundings& surroundings, const Check& /*check*/)
{
    const view::Situation situation = view::readSituation();
    const std::vector<view::Finding> findings = view::judge(situation, surroundings.settings);
    if (const view::Finding* finding =
            findKind(findings, {"status-unreadable", "no-status", "damaged", "no-list", "stale"})) {
        return wrong(finding->sentence, kCollect);
    }
    const std::size_t shares = situation.status.shares.size();
    return good(fill(
        trn("{1} share, published {2}.", "{1} shares, published {2}.", shares),
        {std::to_string(shares), view::formatElapsed(situation.status.published, situation.now)}));
}

Diagnosis examineCollection(const Surroundings& surroundings, const Check& /*check*/)
{
    const view::Situation situation = view::readSituation();
    const std::vector<view::Finding> findings = view::judge(situation, surroundings.settings);
    if (const view::Finding* finding = findKind(findings, {"interrupted"})) {
        return wrong(finding->sentence, kCollect);
    }
    return good(situation.status.isCollecting ? tr("One is running.")
                                              : tr("None is running, and none was interrupted."));
}

} // namespace client
