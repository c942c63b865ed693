// SPDX-License-Identifier: MIT
#include "client/status_report.h"

#include <algorithm>
#include <array>

#include "client/json_values.h"
#include "client/text_table.h"
#include "guard/values.h"
#include "text/translation.h"
#include "view/terminal_text.h"
#include "view/unmeasured.h"
#include "view/wording.h"

namespace client {
namespace {

using config::Configuration;
using text::fill;
using text::mark;
using text::tr;
using text::trc;
using view::Finding;
using view::makePrintable;
using view::PublishedStatus;
using view::ShareRow;
using view::Situation;

constexpr const char* kNone = "-";

// ---- Table ------------------------------------------------------------------------------------

std::string formatState(const ShareRow& row, const Configuration& configuration)
{
    if (row.report == view::BackupReport::kUnreadable) {
        return tr("unreadable");
    }
    return row.backupState ? view::formatState(*row.backupState, configuration) : kNone;
}

TableRow makeRow(const ShareRow& row, const Configuration& configuration)
{
    std::string used = kNone;
    if (row.used) {
        used = std::to_string(row.used->value) + " " + row.used->unit;
    }
    return {makePrintable(row.name), makePrintable(used),
            makePrintable(formatState(row, configuration)),
            makePrintable(row.backupDay ? view::formatIsoDate(*row.backupDay) : kNone)};
}

std::string renderTotal(const Situation& situation)
{
    return (situation.capacity ? view::formatCapacity(*situation.capacity)
                               : std::string(tr("The disk's capacity is not known"))) +
           "\n\n";
}

std::string renderList(const PublishedStatus& status, const Configuration& configuration)
{
    if (status.result == PublishedStatus::Result::kNoList) {
        return std::string(tr("The last collection could not get the list of shares.")) + "\n";
    }
    return status.shares.empty() ? std::string(tr("There are no internal shares.")) + "\n"
                                 : renderShares(status.shares, configuration);
}

std::string formatLocal(const char* format, std::time_t time)
{
    std::tm local = {};
    ::localtime_r(&time, &local);
    return view::formatTime(format, local);
}

std::string renderCollection(const PublishedStatus& status)
{
    if (!status.isCollecting) {
        return tr("No collection is running.");
    }
    return status.collectingSince ? fill(tr("A collection is running since {}."),
                                         {formatLocal("%H:%M:%S", *status.collectingSince)})
                                  : tr("A collection is running.");
}

std::string renderFooter(const PublishedStatus& status)
{
    const std::string published =
        fill(tr("Published {}."), {formatLocal("%Y-%m-%d %H:%M:%S %Z", status.published)});
    return view::joinSentences(published, renderCollection(status)) + "\n";
}

std::string renderFinding(const Finding& finding)
{
    constexpr auto kForms =
        std::to_array<const char*>({mark("Fine: {}"), mark("Warning: {}"), mark("Critical: {}")});
    const char* form = tr(kForms.at(static_cast<std::size_t>(finding.level)));
    return fill(form, {renderSentence(finding)}) + "\n";
}

std::string renderFindings(const std::vector<Finding>& findings)
{
    std::string out = "\n";
    for (const Finding& finding : findings) {
        out += renderFinding(finding);
    }
    return findings.empty() ? "\n" + std::string(tr("Nothing needs attention.")) + "\n" : out;
}

// ---- JSON -------------------------------------------------------------------------------------

Json makeShare(const ShareRow& row)
{
    Json share;
    addName(share, row.name);
    if (!guard::isMeasurable(row.name)) {
        share["must_be_renamed"] = true;
    }
    share["used"] = row.used ? Json(row.used->value) : Json();
    share["unit"] = row.used ? Json(std::string(1, row.used->unit)) : Json();
    addSpace(share, row.used);
    addBackup(share, row.backupState, row.backupDay);
    if (row.report == view::BackupReport::kUnreadable) {
        share["backup_unreadable"] = true;
    }
    return share;
}

const char* wordOf(view::Obstacle obstacle)
{
    constexpr auto kWords = std::to_array<const char*>(
        {"shell-character", "separator", "first-character", "failed", "no-room"});
    return kWords.at(static_cast<std::size_t>(obstacle));
}

/// Null if the list of shares is not known.
Json makeUnmeasured(const Situation& situation)
{
    if (situation.status.result != PublishedStatus::Result::kComplete) {
        return {};
    }
    Json json = Json::array();
    for (const auto& [name, obstacle] :
         view::findUnmeasured(situation.status.shares, situation.listed)) {
        Json share;
        addName(share, name);
        share["reason"] = wordOf(obstacle);
        json.push_back(share);
    }
    return json;
}

void addCapacity(Json& json, const std::optional<view::Capacity>& capacity)
{
    json["capacity_kib"] = capacity ? Json(capacity->total) : Json();
    json["used_kib"] = capacity ? Json(capacity->used) : Json();
    json["free_kib"] = capacity ? Json(capacity->free) : Json();
}

} // namespace

std::string renderShares(const std::vector<ShareRow>& shares, const Configuration& configuration)
{
    using enum Align;
    constexpr auto kColumns = std::to_array<Align>({kLeft, kRight, kLeft, kLeft});
    std::vector<TableRow> rows = {
        {makePrintable(trc("heading", "SHARE")), makePrintable(trc("heading", "USED")),
         makePrintable(trc("heading", "STATE")), makePrintable(trc("heading", "LAST BACKUP"))}};
    for (const ShareRow& share : shares) {
        rows.push_back(makeRow(share, configuration));
    }
    return layOutTable(kColumns, rows);
}

Json makeJson(const std::vector<ShareRow>& shares)
{
    Json json = Json::array();
    std::ranges::transform(shares, std::back_inserter(json), makeShare);
    return json;
}

std::string renderSentence(const Finding& finding)
{
    return makePrintable(finding.sentence).text;
}

std::string renderTable(const Situation& situation, const Configuration& configuration)
{
    return renderTotal(situation) + renderList(situation.status, configuration) + "\n" +
           renderFooter(situation.status) + renderFindings(view::judge(situation, configuration));
}

std::string renderJson(const Situation& situation, const Configuration& configuration)
{
    const PublishedStatus& status = situation.status;
    const bool isListed = status.result != PublishedStatus::Result::kNoList;
    Json json;
    json["published"] = makeTime(status.published);
    json["collecting"] = status.isCollecting;
    json["collecting_since"] = status.isCollecting ? makeTime(status.collectingSince) : Json();
    addCapacity(json, situation.capacity);
    json["shares"] = isListed ? makeJson(status.shares) : Json();
    json["unmeasured"] = makeUnmeasured(situation);
    json["findings"] = makeFindings(view::judge(situation, configuration));
    return renderJson(json);
}

} // namespace client
