// SPDX-License-Identifier: MIT
//
// share_record.h: the files that the collector works with.
#pragma once

#include <cstdint>

namespace sharestatus {

/// Holds the share list first, and then, once that has been read, what du prints for each share.
/// Its name is fixed: the semaphore keeps two collections apart.
inline constexpr const char* kCollectorFile = "/tmp/pelsts1.tmp";

inline constexpr const char* kBackupStatusFolder = "/etc/pelconfig/vokcontrol/__bksts/";
inline constexpr const char* kBackupStatusPrefix = "__bk";

/// A size in the largest unit that it reaches: up to 1024 KiB count in 'K'; up to 1000000 KiB in
/// 'M', a thousand KiB each; beyond that in 'G', a million KiB each. The thresholds mix powers of
/// two and of ten, and clients round the same way: 1025 KiB are 1 M. Of a value beyond 32 bits the
/// low 32 are kept.
struct ScaledUsage {
    int value;
    char unit;
};

[[nodiscard]] ScaledUsage scaleUsage(std::int64_t kibibytes);

} // namespace sharestatus
