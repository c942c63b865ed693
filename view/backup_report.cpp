// SPDX-License-Identifier: MIT
#include "view/backup_report.h"

#include <cerrno>

#include "sharestatus/share_record.h"
#include "sharestatus/status_format.h"
#include "view/file_start.h"

namespace view {

BackupReport findReport(const std::string& share)
{
    if (share.find('/') != std::string::npos) {
        return BackupReport::kNone;
    }
    constexpr std::size_t kReportSize = 1 + sharestatus::kDateSize;
    const std::string path =
        std::string(sharestatus::kBackupStatusFolder) + sharestatus::kBackupStatusPrefix + share;
    const FileStart report = readFileStart(path.c_str(), kReportSize);
    if (report.error == ENOENT || report.error == ENOTDIR || report.error == ENAMETOOLONG) {
        return BackupReport::kNone;
    }
    return isReadableReport(report.bytes) ? BackupReport::kNewer : BackupReport::kUnreadable;
}

} // namespace view
