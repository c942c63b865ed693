// SPDX-License-Identifier: MIT
//
// backup_report.h: the files in which backups are reported, as far as a collection has not read
// them.
#pragma once

#include <string>

#include "view/share_row.h"

namespace view {

/// Looks for the report of a share of which the status says nothing (sharestatus/share_record.h).
/// @return kNone if there is no file; kNewer if there is one that the next collection will read;
///         kUnreadable for one that it will not
[[nodiscard]] BackupReport findReport(const std::string& share);

} // namespace view
