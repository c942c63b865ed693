// SPDX-License-Identifier: MIT
#include "client/status_report.h"

#include <algorithm>
#include <array>
#include <chrono>

#include "client/json_text.h"
#include "client/terminal_text.h"
#include "client/text_table.h"
#include "guard/values.h"
#include "sharestatus/status_format.h"

namespace client {
namespace {

using sharestatus::ShareEntry;

constexpr const char* kNone = "-";

// ---- From a record to a row -------------------------------------------------------------------

std::optional<SpaceUsed> readUsed(const ShareEntry& entry)
{
    if (entry.unit != 'K' && entry.unit != 'M' && entry.unit != 'G') {
        return std::nullopt;
    }
    return SpaceUsed{entry.used, entry.unit};
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

std::optional<int> readState(char state)
{
    return isDigit(state) ? std::optional(state - '0') : std::nullopt;
}

/// MMDDYYYY as YYYY-MM-DD, where it is a day of the calendar.
std::optional<std::string> readDate(std::string_view date)
{
    if (!std::ranges::all_of(date, isDigit)) {
        return std::nullopt;
    }
    const std::string month(date.substr(0, 2));
    const std::string day(date.substr(2, 2));
    const std::string year(date.substr(4, 4));
    const std::chrono::year_month_day calendar{
        std::chrono::year(std::stoi(year)),
        std::chrono::month(static_cast<unsigned>(std::stoi(month))),
        std::chrono::day(static_cast<unsigned>(std::stoi(day)))};
    return calendar.ok() ? std::optional(year + "-" + month + "-" + day) : std::nullopt;
}

// ---- Table ------------------------------------------------------------------------------------

TableRow makeRow(const ShareRow& row)
{
    std::string used = kNone;
    if (row.used) {
        used = std::to_string(row.used->value) + " " + row.used->unit;
    }
    const std::string state = row.backupState ? std::to_string(*row.backupState) : kNone;
    return {makePrintable(row.name), makePrintable(used), makePrintable(state),
            makePrintable(row.backupDate.value_or(kNone))};
}

std::string formatTime(const char* format, const std::tm& time)
{
    std::array<char, 64> text{};
    const std::size_t size = std::strftime(text.data(), text.size(), format, &time);
    return {text.data(), size};
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

std::string renderFooter(const StatusReport& report)
{
    std::tm local = {};
    ::localtime_r(&report.published, &local);
    std::string out = "Published " + formatTime("%Y-%m-%d %H:%M:%S %Z", local) + ". ";
    out += report.isCollecting ? "A collection is running now.\n" : "No collection is running.\n";
    return out;
}

// ---- JSON -------------------------------------------------------------------------------------

template <class Value> Json orNull(const std::optional<Value>& value)
{
    return value ? Json(*value) : Json();
}

std::string toHex(std::string_view bytes)
{
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string out;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        out += {kDigits[byte >> 4U], kDigits[byte & 0x0FU]};
    }
    return out;
}

Json makeShare(const ShareRow& row)
{
    Json share;
    share["name"] = row.name;
    if (!isUtf8(row.name)) {
        share["name_hex"] = toHex(row.name);
    }
    if (!guard::isMeasurable(row.name)) {
        share["must_be_renamed"] = true;
    }
    share["used"] = row.used ? Json(row.used->value) : Json();
    share["unit"] = row.used ? Json(std::string(1, row.used->unit)) : Json();
    share["backup_state"] = orNull(row.backupState);
    share["backup_date"] = orNull(row.backupDate);
    return share;
}

std::vector<ShareRow> readRows(sharestatus::TableReader& table)
{
    std::vector<ShareRow> rows;
    while (const std::optional<ShareEntry> entry = table.next()) {
        rows.push_back({
            .name = std::string(entry->name),
            .used = readUsed(*entry),
            .backupState = readState(entry->state),
            .backupDate = readDate(entry->date),
        });
    }
    return rows;
}

} // namespace

std::optional<StatusReport> readReport(std::string_view payload)
{
    StatusReport report;
    report.isListed = !payload.empty();
    sharestatus::TableReader table(payload);
    report.shares = readRows(table);
    return table.isWhole() ? std::optional(std::move(report)) : std::nullopt;
}

std::optional<std::vector<ShareRow>> readRecords(std::string_view payload)
{
    std::string counted(payload.substr(0, sharestatus::kCountOffset));
    counted += "\xFF\xFF";
    counted += payload.substr(std::min(payload.size(), counted.size()));
    sharestatus::TableReader table(counted);
    std::vector<ShareRow> rows = readRows(table);
    return table.isAtEnd() ? std::optional(std::move(rows)) : std::nullopt;
}

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

std::string renderTable(const StatusReport& report)
{
    std::string out;
    if (!report.isListed) {
        out = "The last collection could not get the list of shares.\n";
    } else if (report.shares.empty()) {
        out = "There are no internal shares.\n";
    } else {
        out = renderShares(report.shares);
    }
    return out + "\n" + renderHints(report.shares) + renderFooter(report);
}

std::string renderJson(const StatusReport& report)
{
    std::tm utc = {};
    ::gmtime_r(&report.published, &utc);
    Json json;
    json["published"] = formatTime("%Y-%m-%dT%H:%M:%SZ", utc);
    json["collecting"] = report.isCollecting;
    json["shares"] = report.isListed ? makeJson(report.shares) : Json();
    return renderJson(json);
}

} // namespace client
