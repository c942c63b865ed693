// SPDX-License-Identifier: MIT
//
// capacity.h: how large the file system of the shares is, and how full.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace view {

/// The folder with the shares, one folder for each.
inline constexpr const char* kShareFolder = "/share";

/// A file system, in KiB. The part that is reserved for the system counts only in the total.
struct Capacity {
    std::uint64_t total = 0;
    std::uint64_t used = 0;
    std::uint64_t free = 0; ///< how much can still be written

    /// How full it is, in percent, rounded up: 100 only if nothing more can be written.
    [[nodiscard]] unsigned percentFull() const;
};

/// Reads the size of a folder's file system (statvfs).
/// @return nothing if that fails, or if the file system has no size
[[nodiscard]] std::optional<Capacity> readCapacity(const char* folder = kShareFolder);

/// "312 of 500 GB used, 188 GB free", in the units of a share status
[[nodiscard]] std::string formatCapacity(const Capacity& capacity);

} // namespace view
