// SPDX-License-Identifier: MIT
//
// status_report.h: the published share status as people and programs read it. Values in, text out;
// nothing here touches a file.
#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "client/json_text.h"

namespace client {

struct SpaceUsed {
    std::uint16_t value;
    char unit; ///< 'K', 'M' or 'G'
};

/// One share. What could not be measured, was never reported or makes no sense is absent.
struct ShareRow {
    std::string name; ///< as it stands on the disk: any bytes
    std::optional<SpaceUsed> used;
    std::optional<int> backupState;        ///< 0 to 9, as the backup client reported it
    std::optional<std::string> backupDate; ///< YYYY-MM-DD
};

struct StatusReport {
    bool isListed = false; ///< whether the collection got a list of shares at all
    std::vector<ShareRow> shares;
    std::time_t published = 0;
    bool isCollecting = false;
};

/// Takes the rows out of a payload; nothing where it is no table of records.
[[nodiscard]] std::optional<StatusReport> readReport(std::string_view payload);

/// Takes the rows out of a payload whose header may count anything; nothing where its records do
/// not end where it ends.
[[nodiscard]] std::optional<std::vector<ShareRow>> readRecords(std::string_view payload);

/// One line a share under a heading.
[[nodiscard]] std::string renderShares(const std::vector<ShareRow>& shares);

/// The same for programs.
[[nodiscard]] Json makeJson(const std::vector<ShareRow>& shares);

/// One line a share under a heading, then the shares that have to be renamed, when it was published
/// (in local time) and whether a collection is running.
[[nodiscard]] std::string renderTable(const StatusReport& report);

/// The same for programs: one JSON object in ASCII. Absent values are null, and so is the list of
/// shares when the collection got none. A name that is no UTF-8 has its bytes in "name_hex", too; a
/// share that has to be renamed before it is measured has "must_be_renamed".
[[nodiscard]] std::string renderJson(const StatusReport& report);

} // namespace client
