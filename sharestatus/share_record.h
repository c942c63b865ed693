// SPDX-License-Identifier: MIT
//
// share_record.h: the files that the collector works with.
#pragma once

namespace sharestatus {

/// Holds the share list first, and then, once that has been read, what du prints for each share.
/// Its name is fixed: the semaphore keeps two collections apart.
inline constexpr const char* kCollectorFile = "/tmp/pelsts1.tmp";

inline constexpr const char* kBackupStatusFolder = "/etc/pelconfig/vokcontrol/__bksts/";
inline constexpr const char* kBackupStatusPrefix = "__bk";

} // namespace sharestatus
