// SPDX-License-Identifier: MIT
//
// backup_report.h: looks for reports of backups that the published status does not contain.
#pragma once

#include <string>

#include "view/share_row.h"

namespace view {

/// Looks for the report of a share without one in the status (sharestatus/share_record.h).
/// @return kNone if there is no file; kNewer if the next collection will read it; kUnreadable if it
///         cannot be read
[[nodiscard]] BackupReport findReport(const std::string& share);

} // namespace view
