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

/// What is known of the report of a share's last backup.
enum class BackupReport {
    kNone,       ///< there never was one
    kRead,       ///< it has a day, at least
    kUnreadable, ///< there is one, but it makes no sense or cannot be read
    kNewer,      ///< there is one that came after the collection, which has not read it yet
};

/// One share. What could not be measured, was never reported or makes no sense is absent.
struct ShareRow {
    std::string name; ///< as it is on the disk: any bytes
    std::optional<Space> used;
    std::optional<int> backupState; ///< 0 to 9, as the backup client reported it
    std::optional<std::chrono::sys_days> backupDay;
    BackupReport report = BackupReport::kNone;
};

/// What the bytes of a report's file say: a digit and eight digits of a day
/// (sharestatus/share_record.h).
[[nodiscard]] bool isReadableReport(std::string_view line);

/// Takes the rows out of a payload; nothing if it is no table of records.
[[nodiscard]] std::optional<std::vector<ShareRow>> readTable(std::string_view payload);

/// Takes the rows out of a payload whose header may count anything; nothing if its records do not
/// end where it ends.
[[nodiscard]] std::optional<std::vector<ShareRow>> readRecords(std::string_view payload);

/// The space that all shares use together, in KiB.
[[nodiscard]] std::uint64_t totalUsed(const std::vector<ShareRow>& shares);

} // namespace view
