// SPDX-License-Identifier: MIT
//
// share_record.h: the collector's work file, and the size in a share's record.
#pragma once

#include <cstdint>

namespace sharestatus {

/// Holds first the share list and then, after the list is read, the output of du for each share.
/// Its name can be fixed because the semaphore prevents two collections at once.
inline constexpr const char* kCollectorFile = "/tmp/pelsts1.tmp";

inline constexpr const char* kBackupStatusFolder = "/etc/pelconfig/vokcontrol/__bksts/";
inline constexpr const char* kBackupStatusPrefix = "__bk";

/// A size in the unit that its KiB call for: up to 1024 in 'K', 1 KiB each; up to 1,000,000 in 'M',
/// 1,000 KiB each; above that in 'G', 1,000,000 KiB each. Fractions are cut off, not rounded: 1025
/// KiB are 1 M. A value beyond 32 bits is cut to its low 32 bits.
struct ScaledUsage {
    int value;
    char unit;
};

[[nodiscard]] ScaledUsage scaleUsage(std::int64_t kibibytes);

} // namespace sharestatus
