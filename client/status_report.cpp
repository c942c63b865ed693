// SPDX-License-Identifier: MIT
#include "client/status_report.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <nlohmann/json.hpp>

#include "client/terminal_text.h"
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

struct TableLine {
    TerminalText name;
    std::string used;
    std::string state;
    std::string date;
};

std::string padding(std::size_t columns, std::size_t used)
{
    return std::string(columns - std::min(columns, used), ' ');
}

TableLine makeLine(const ShareRow& row)
{
    TableLine line{makePrintable(row.name), kNone, kNone, row.backupDate.value_or(kNone)};
    if (row.used) {
        line.used = std::to_string(row.used->value) + " " + row.used->unit;
    }
    if (row.backupState) {
        line.state = std::to_string(*row.backupState);
    }
    return line;
}

std::string renderLines(const std::vector<TableLine>& lines)
{
    std::size_t nameColumns = 0;
    std::size_t usedColumns = 0;
    for (const TableLine& line : lines) {
        nameColumns = std::max(nameColumns, line.name.columns);
        usedColumns = std::max(usedColumns, line.used.size());
    }
    const std::size_t stateColumns = lines.front().state.size();

    std::string out;
    for (const TableLine& line : lines) {
        out += line.name.text + padding(nameColumns, line.name.columns);
        out += "  " + padding(usedColumns, line.used.size()) + line.used;
        out += "  " + line.state + padding(stateColumns, line.state.size());
        out += "  " + line.date + "\n";
    }
    return out;
}

std::string formatTime(const char* format, const std::tm& time)
{
    std::array<char, 64> text{};
    const std::size_t size = std::strftime(text.data(), text.size(), format, &time);
    return {text.data(), size};
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

using Json = nlohmann::ordered_json;

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

Json makeJson(const ShareRow& row)
{
    Json share;
    share["name"] = row.name;
    if (!isUtf8(row.name)) {
        share["name_hex"] = toHex(row.name);
    }
    share["used"] = row.used ? Json(row.used->value) : Json();
    share["unit"] = row.used ? Json(std::string(1, row.used->unit)) : Json();
    share["backup_state"] = orNull(row.backupState);
    share["backup_date"] = orNull(row.backupDate);
    return share;
}

} // namespace

std::optional<StatusReport> readReport(std::string_view payload)
{
    StatusReport report;
    report.isListed = !payload.empty();
    sharestatus::TableReader table(payload);
    while (const std::optional<ShareEntry> entry = table.next()) {
        report.shares.push_back({
            .name = std::string(entry->name),
            .used = readUsed(*entry),
            .backupState = readState(entry->state),
            .backupDate = readDate(entry->date),
        });
    }
    return table.isWhole() ? std::optional(std::move(report)) : std::nullopt;
}

std::string renderTable(const StatusReport& report)
{
    std::string out;
    if (!report.isListed) {
        out = "The last collection could not get the list of shares.\n";
    } else if (report.shares.empty()) {
        out = "There are no internal shares.\n";
    } else {
        std::vector<TableLine> lines = {{makePrintable("SHARE"), "USED", "STATE", "LAST BACKUP"}};
        std::ranges::transform(report.shares, std::back_inserter(lines), makeLine);
        out = renderLines(lines);
    }
    return out + "\n" + renderFooter(report);
}

std::string renderJson(const StatusReport& report)
{
    std::tm utc = {};
    ::gmtime_r(&report.published, &utc);
    Json json;
    json["published"] = formatTime("%Y-%m-%dT%H:%M:%SZ", utc);
    json["collecting"] = report.isCollecting;
    json["shares"] = report.isListed ? Json(Json::array()) : Json();
    for (const ShareRow& row : report.shares) {
        json["shares"].push_back(makeJson(row));
    }
    return json.dump(2, ' ', true, Json::error_handler_t::replace) + "\n";
}

} // namespace client
