// SPDX-License-Identifier: MIT
#include "client/status_report.h"

#include <algorithm>
#include <array>

#include "client/text_table.h"
#include "core/bytes.h"
#include "guard/values.h"
#include "view/terminal_text.h"
#include "view/utf8.h"

namespace client {
namespace {

using view::isUtf8;
using view::makePrintable;
using view::PublishedStatus;
using view::ShareRow;

constexpr const char* kNone = "-";

// ---- Table ------------------------------------------------------------------------------------

TableRow makeRow(const ShareRow& row)
{
    std::string used = kNone;
    if (row.used) {
        used = std::to_string(row.used->value) + " " + row.used->unit;
    }
    const std::string state = row.backupState ? std::to_string(*row.backupState) : kNone;
    return {makePrintable(row.name), makePrintable(used), makePrintable(state),
            makePrintable(row.backupDay ? view::formatIsoDate(*row.backupDay) : kNone)};
}

/// A line for each share that the collection leaves out for its name.
std::string renderHints(const std::vector<ShareRow>& shares)
{
    std::string out;
    for (const ShareRow& row : shares) {
        if (!guard::isMeasurable(row.name)) {
            out += "Rename the share " + makePrintable(row.name).text +
                   ": it is not measured, as its name could run in a shell.\n";
        }
    }
    return out;
}

std::string renderFooter(const PublishedStatus& status)
{
    std::tm local = {};
    ::localtime_r(&status.published, &local);
    std::string out = "Published " + view::formatTime("%Y-%m-%d %H:%M:%S %Z", local) + ". ";
    out += status.isCollecting ? "A collection is running now.\n" : "No collection is running.\n";
    return out;
}

// ---- JSON -------------------------------------------------------------------------------------

Json makeShare(const ShareRow& row)
{
    Json share;
    share["name"] = row.name;
    if (!isUtf8(row.name)) {
        std::string digits;
        core::appendHex(digits, row.name);
        share["name_hex"] = digits;
    }
    if (!guard::isMeasurable(row.name)) {
        share["must_be_renamed"] = true;
    }
    share["used"] = row.used ? Json(row.used->value) : Json();
    share["unit"] = row.used ? Json(std::string(1, row.used->unit)) : Json();
    share["backup_state"] = row.backupState ? Json(*row.backupState) : Json();
    share["backup_date"] = row.backupDay ? Json(view::formatIsoDate(*row.backupDay)) : Json();
    return share;
}

} // namespace

std::string renderShares(const std::vector<ShareRow>& shares)
{
    using enum Align;
    constexpr auto kColumns = std::to_array<Align>({kLeft, kRight, kLeft, kLeft});
    std::vector<TableRow> rows = {{makePrintable("SHARE"), makePrintable("USED"),
                                   makePrintable("STATE"), makePrintable("LAST BACKUP")}};
    std::ranges::transform(shares, std::back_inserter(rows), makeRow);
    return layOutTable(kColumns, rows);
}

Json makeJson(const std::vector<ShareRow>& shares)
{
    Json json = Json::array();
    std::ranges::transform(shares, std::back_inserter(json), makeShare);
    return json;
}

std::string renderTable(const PublishedStatus& status)
{
    std::string out;
    if (status.result == PublishedStatus::Result::kNoList) {
        out = "The last collection could not get the list of shares.\n";
    } else if (status.shares.empty()) {
        out = "There are no internal shares.\n";
    } else {
        out = renderShares(status.shares);
    }
    return out + "\n" + renderHints(status.shares) + renderFooter(status);
}

std::string renderJson(const PublishedStatus& status)
{
    const bool isListed = status.result != PublishedStatus::Result::kNoList;
    std::tm utc = {};
    ::gmtime_r(&status.published, &utc);
    Json json;
    json["published"] = view::formatTime("%Y-%m-%dT%H:%M:%SZ", utc);
    json["collecting"] = status.isCollecting;
    json["shares"] = isListed ? makeJson(status.shares) : Json();
    return renderJson(json);
}

} // namespace client
