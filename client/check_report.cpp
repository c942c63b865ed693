// SPDX-License-Identifier: MIT
#include "client/check_report.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "text/translation.h"
#include "view/terminal_text.h"
#include "view/unmeasured.h"
#include "view/wording.h"

namespace client {
namespace {

using config::Configuration;
using view::Finding;
using view::Situation;

CheckReport makeReport(int code, const std::string& text, const std::string& figures)
{
    constexpr auto kWords = std::to_array<const char*>({"OK", "WARNING", "CRITICAL", "UNKNOWN"});
    std::string printable = view::makePrintable(text).text;
    for (std::size_t bar = 0; (bar = printable.find('|', bar)) != std::string::npos;) {
        printable.replace(bar, 1, "\\u{7c}");
    }
    return {code, std::string("VOKCONTROL ") + kWords.at(static_cast<std::size_t>(code)) + " - " +
                      printable + (figures.empty() ? "" : " |" + figures) + "\n"};
}

bool isStatusKnown(const Situation& situation)
{
    using enum view::PublishedStatus::Result;
    return situation.status.result == kComplete || situation.status.result == kNoList;
}

/// Whether a finding says that there is no status to judge.
bool tellsOfIgnorance(const Finding& finding)
{
    constexpr auto kKinds =
        std::to_array<std::string_view>({"no-status", "damaged", "status-unreadable"});
    return std::ranges::find(kKinds, finding.kind) != kKinds.end();
}

int codeOf(const Situation& situation, std::vector<Finding> findings)
{
    std::erase_if(findings, tellsOfIgnorance);
    switch (view::worstOf(findings)) {
    case view::Level::kCritical:
        return kCheckCritical;
    case view::Level::kWarning:
        return kCheckWarning;
    case view::Level::kFine:
        break;
    }
    return isStatusKnown(situation) && situation.capacity ? kCheckOk : kCheckUnknown;
}

std::string formatText(const Situation& situation, const std::vector<Finding>& findings)
{
    std::string text;
    for (const Finding& finding : findings) {
        text = view::joinSentences(text, finding.sentence);
    }
    if (!situation.capacity) {
        return view::joinSentences(text, text::tr("The disk's capacity is not known."));
    }
    return text.empty() ? view::formatCapacity(*situation.capacity) : text;
}

/// " NAME=VALUE;WARNING;CRITICAL;LEAST;MOST"
std::string diskFigures(const view::Capacity& capacity, const Configuration& configuration)
{
    const auto limit = [&](unsigned percent) {
        return std::to_string((capacity.used + capacity.free) / 100 * percent);
    };
    return " used=" + std::to_string(capacity.used) + "KB;" + limit(configuration.fullWarning) +
           ";" + limit(configuration.fullCritical) + ";0;" + std::to_string(capacity.total) +
           " full=" + std::to_string(capacity.percentFull()) + "%;" +
           std::to_string(configuration.fullWarning - 1) + ";" +
           std::to_string(configuration.fullCritical - 1) + ";0;100";
}

std::string statusFigures(const Situation& situation, const Configuration& configuration)
{
    constexpr unsigned kHour = 3600;
    const auto& shares = situation.status.shares;
    const std::time_t age = std::max<std::time_t>(situation.now - situation.status.published, 0);
    return " age=" + std::to_string(age) + "s;" + std::to_string(configuration.stale * kHour) +
           " shares=" + std::to_string(shares.size()) +
           " unmeasured=" + std::to_string(view::findUnmeasured(shares, situation.listed).size()) +
           ";0";
}

} // namespace

CheckReport renderCheck(const Situation& situation, const Configuration& configuration)
{
    const std::vector<Finding> findings = view::judge(situation, configuration);
    std::string figures;
    if (situation.capacity) {
        figures += diskFigures(*situation.capacity, configuration);
    }
    if (isStatusKnown(situation)) {
        figures += statusFigures(situation, configuration);
    }
    return makeReport(codeOf(situation, findings), formatText(situation, findings), figures);
}

CheckReport renderUnknown(const std::string& reason)
{
    return makeReport(kCheckUnknown, reason, "");
}

} // namespace client
