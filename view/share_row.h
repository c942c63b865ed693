// SPDX-License-Identifier: MIT
//
// share_row.h: the shares of a status, as people and programs are shown them. Values in, values
// out.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "view/wording.h"

namespace view {

/// What is known about the report of a share's last backup.
enum class BackupReport {
    kNone,       ///< there never was one
    kRead,       ///< it has at least a day
    kUnreadable, ///< there is one that is malformed or cannot be read
    kNewer,      ///< there is one that is newer than the collection
};

/// One share. Values that were not measured, never reported, or are malformed are absent.
struct ShareRow {
    std::string name; ///< as it is on the disk: any bytes
    std::optional<Space> used;
    std::optional<int> backupState; ///< 0 to 9, as the backup client reported it
    std::optional<std::chrono::sys_days> backupDay;
    BackupReport report = BackupReport::kNone;
};

/// Reads the bytes of a report's file: a digit and eight digits of a day
/// (sharestatus/share_record.h).
[[nodiscard]] bool isReadableReport(std::string_view line);

/// Reads the rows of a payload; nothing if it is not a table of records.
[[nodiscard]] std::optional<std::vector<ShareRow>> readTable(std::string_view payload);

/// Reads the rows of a payload without using the count in its header; nothing if the last record
/// does not end at the payload's end.
[[nodiscard]] std::optional<std::vector<ShareRow>> readRecords(std::string_view payload);

/// The space that all shares use together, in KiB.
[[nodiscard]] std::uint64_t totalUsed(const std::vector<ShareRow>& shares);

} // namespace view
