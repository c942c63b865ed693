// SPDX-License-Identifier: MIT
#include "client/metrics_report.h"

#include <algorithm>
#include <optional>
#include <set>
#include <sstream>
#include <string_view>

#include "core/bytes.h"
#include "view/utf8.h"
#include "vokcontrol.h"

namespace client {
namespace {

using view::Situation;

constexpr std::uint64_t kKibibyte = 1024;

/// One family of figures: its name, what kind and unit it has, and what it means.
struct Family {
    const char* name;
    const char* unit; ///< "" for none; a name ends with its unit
    const char* help;
};

constexpr Family kUsed = {"vokcontrol_share_used_bytes", "bytes",
                          "Space that a share uses, cut off to the unit of the published status."};
constexpr Family kBackupTime = {"vokcontrol_share_backup_timestamp_seconds", "seconds",
                                "Start of the day of a share's last backup, in UTC."};
constexpr Family kBackupState = {"vokcontrol_share_backup_state", "",
                                 "Digit that the backup client reported for a share."};
constexpr Family kPublished = {"vokcontrol_published_timestamp_seconds", "seconds",
                               "When the share status was published."};
constexpr Family kCapacity = {"vokcontrol_capacity_bytes", "bytes",
                              "Size of the file system of the shares."};
constexpr Family kFree = {"vokcontrol_free_bytes", "bytes",
                          "Space that can still be written there."};
constexpr Family kCollecting = {"vokcontrol_collecting", "",
                                "1 while a collection runs, otherwise 0."};
constexpr Family kFindings = {"vokcontrol_findings", "",
                              "How many findings need attention, by level."};

constexpr Family kTimes = {"vokcontrol_request_seconds", "seconds",
                           "How long requests have taken since the service began, by command."};

std::string headOf(const Family& family, const char* type = "gauge")
{
    const std::string name = family.name;
    const std::string unit = family.unit;
    return "# TYPE " + name + " " + type + "\n" +
           (unit.empty() ? "" : "# UNIT " + name + " " + unit + "\n") + "# HELP " + name + " " +
           family.help + "\n";
}

template <class Number> std::string lineOf(const Family& family, Number number)
{
    return headOf(family) + family.name + " " + std::to_string(number) + "\n";
}

/// Replaces each byte that is no UTF-8.
std::string makeUtf8(std::string_view name)
{
    std::string text;
    while (!name.empty()) {
        const auto character = view::firstCharacter(name);
        const std::size_t size = character ? character->size : 1;
        if (character) {
            text += name.substr(0, size);
        } else {
            text += "\\x";
            core::appendHex(text, name.substr(0, 1));
        }
        name.remove_prefix(size);
    }
    return text;
}

/// Between the quotes of a label.
std::string escape(std::string_view text)
{
    std::string escaped;
    for (const char c : text) {
        switch (c) {
        case '\\':
            escaped += "\\\\";
            break;
        case '"':
            escaped += "\\\"";
            break;
        case '\n':
            escaped += "\\n";
            break;
        default:
            escaped += c;
        }
    }
    return escaped;
}

/// A line each share for which there is a number.
/// @param numberOf  takes a share, and returns its number or nothing
template <class NumberOf>
std::string linesOf(const Family& family, const std::vector<view::ShareRow>& shares,
                    const NumberOf& numberOf)
{
    std::string lines;
    std::set<std::string> seen;
    for (const view::ShareRow& share : shares) {
        const std::string label = escape(makeUtf8(share.name));
        const auto number = numberOf(share);
        if (number && seen.insert(label).second) {
            lines += std::string(family.name) + "{share=\"" + label + "\"} " +
                     std::to_string(*number) + "\n";
        }
    }
    return lines.empty() ? "" : headOf(family) + lines;
}

std::optional<std::uint64_t> usedBytes(const view::ShareRow& share)
{
    return share.used ? std::optional(share.used->kibibytes() * kKibibyte) : std::nullopt;
}

std::optional<std::int64_t> backupTime(const view::ShareRow& share)
{
    constexpr std::int64_t kDay = 86400;
    return share.backupDay ? std::optional(share.backupDay->time_since_epoch().count() * kDay)
                           : std::nullopt;
}

std::string renderStatus(const view::PublishedStatus& status)
{
    std::string text;
    if (status.published != 0) {
        text += lineOf(kPublished, status.published);
    }
    text += lineOf(kCollecting, status.isCollecting ? 1 : 0);
    text += linesOf(kUsed, status.shares, usedBytes);
    text += linesOf(kBackupTime, status.shares, backupTime);
    return text + linesOf(kBackupState, status.shares,
                          [](const view::ShareRow& share) { return share.backupState; });
}

std::string renderCapacity(const std::optional<view::Capacity>& capacity)
{
    return capacity ? lineOf(kCapacity, capacity->total * kKibibyte) +
                          lineOf(kFree, capacity->free * kKibibyte)
                    : "";
}

std::string renderFindings(const std::vector<view::Finding>& findings)
{
    std::string text = headOf(kFindings);
    for (const view::Level level : {view::Level::kWarning, view::Level::kCritical}) {
        text += std::string(kFindings.name) + "{level=\"" + view::wordOf(level) + "\"} " +
                std::to_string(std::ranges::count(findings, level, &view::Finding::level)) + "\n";
    }
    return text;
}

/// A table of the service's has slots of a code and a number. The last slot has no code: it counts
/// all commands that have no slot of their own. There is no TYPE, as Prometheus and its node
/// exporter disagree about what a counter's is called there.
std::string renderRequests(std::string_view usage)
{
    constexpr std::size_t kCodeSize = 4;
    constexpr std::size_t kSlotSize = 8;
    if (usage.size() != VOK_USAGE_SIZE) {
        return "";
    }
    std::string text =
        "# HELP vokcontrol_requests_total How many requests the service has received, "
        "as it saved last.\n";
    for (; !usage.empty(); usage.remove_prefix(kSlotSize)) {
        const std::string_view code = usage.substr(0, kCodeSize);
        const bool isNamed = code.front() != '\0';
        text += "vokcontrol_requests_total{command=\"" +
                (isNamed ? escape(makeUtf8(code)) : "other") + "\"} " +
                std::to_string(core::u32At(usage, kCodeSize)) + "\n";
    }
    return text;
}

/// The two figures of a line of the service's times; nothing for a line of another form.
std::string renderTime(const std::string& line)
{
    constexpr double kMillisecondsPerSecond = 1000;
    std::istringstream words(line);
    std::string code;
    std::uint64_t count = 0;
    std::uint64_t milliseconds = 0;
    if (!(words >> code >> count >> milliseconds) || !words.eof()) {
        return "";
    }
    const std::string label = "{command=\"" + escape(makeUtf8(code)) + "\"} ";
    const double seconds = static_cast<double>(milliseconds) / kMillisecondsPerSecond;
    return kTimes.name + ("_sum" + label) + std::to_string(seconds) + "\n" + kTimes.name +
           ("_count" + label) + std::to_string(count) + "\n";
}

std::string renderTimes(std::string_view times)
{
    std::istringstream lines{std::string(times)};
    std::string text;
    for (std::string line; std::getline(lines, line);) {
        text += renderTime(line);
    }
    return text.empty() ? "" : headOf(kTimes, "summary") + text;
}

} // namespace

std::string renderMetrics(const Situation& situation, const config::Configuration& configuration,
                          std::string_view usage, std::string_view times)
{
    return renderCapacity(situation.capacity) + renderStatus(situation.status) +
           renderRequests(usage) + renderTimes(times) +
           renderFindings(view::judge(situation, configuration)) + "# EOF\n";
}

} // namespace client
