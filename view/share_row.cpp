// SPDX-License-Identifier: MIT
#include "view/share_row.h"

#include <algorithm>
#include <numeric>

#include "sharestatus/status_format.h"

namespace view {
namespace {

using sharestatus::ShareEntry;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

std::optional<Space> readUsed(const ShareEntry& entry)
{
    const bool isMeasured = sharestatus::findUnit(entry.unit) != nullptr;
    return isMeasured ? std::optional(Space{entry.used, entry.unit}) : std::nullopt;
}

unsigned readNumber(std::string_view digits)
{
    return std::accumulate(digits.begin(), digits.end(), 0U, [](unsigned number, char digit) {
        return number * 10 + static_cast<unsigned>(digit - '0');
    });
}

/// MMDDYYYY, if it is a day of the calendar.
std::optional<std::chrono::sys_days> readDay(std::string_view date)
{
    if (!std::ranges::all_of(date, isDigit)) {
        return std::nullopt;
    }
    const std::chrono::year_month_day day{
        std::chrono::year(static_cast<int>(readNumber(date.substr(4, 4)))),
        std::chrono::month(readNumber(date.substr(0, 2))),
        std::chrono::day(readNumber(date.substr(2, 2)))};
    return day.ok() ? std::optional(std::chrono::sys_days(day)) : std::nullopt;
}

BackupReport judgeReport(const ShareEntry& entry)
{
    if (readDay(entry.date)) {
        return BackupReport::kRead;
    }
    const bool isBlank =
        entry.state == '\0' && std::ranges::all_of(entry.date, [](char c) { return c == '\0'; });
    return isBlank ? BackupReport::kNone : BackupReport::kUnreadable;
}

ShareRow readRow(const ShareEntry& entry)
{
    return {
        .name = std::string(entry.name),
        .used = readUsed(entry),
        .backupState = isDigit(entry.state) ? std::optional(entry.state - '0') : std::nullopt,
        .backupDay = readDay(entry.date),
        .report = judgeReport(entry),
    };
}

std::vector<ShareRow> readRows(sharestatus::TableReader& table)
{
    std::vector<ShareRow> rows;
    while (const std::optional<ShareEntry> entry = table.next()) {
        rows.push_back(readRow(*entry));
    }
    return rows;
}

} // namespace

bool isReadableReport(std::string_view line)
{
    constexpr std::size_t kReportSize = 1 + sharestatus::kDateSize;
    return line.size() >= kReportSize && isDigit(line[0]) &&
           readDay(line.substr(1, sharestatus::kDateSize)).has_value();
}

std::optional<std::vector<ShareRow>> readTable(std::string_view payload)
{
    sharestatus::TableReader table(payload);
    std::vector<ShareRow> rows = readRows(table);
    return table.isWhole() ? std::optional(std::move(rows)) : std::nullopt;
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

std::uint64_t totalUsed(const std::vector<ShareRow>& shares)
{
    return std::accumulate(shares.begin(), shares.end(), std::uint64_t{0},
                           [](std::uint64_t sum, const ShareRow& share) {
                               return sum + (share.used ? share.used->kibibytes() : 0);
                           });
}

} // namespace view
