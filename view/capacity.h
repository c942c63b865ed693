// SPDX-License-Identifier: MIT
//
// capacity.h: how large the file system of the shares is, and how full.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace view {

/// Where the appliance keeps its shares, a folder each.
inline constexpr const char* kShareFolder = "/share";

/// A file system, in KiB. What the system keeps back for itself is part of the total alone.
struct Capacity {
    std::uint64_t total = 0;
    std::uint64_t used = 0;
    std::uint64_t free = 0; ///< what can still be written

    /// How full it is, in percent, rounded up: it is 100 only if nothing more can be written.
    [[nodiscard]] unsigned percentFull() const;
};

/// Asks the kernel (statvfs) for the file system that holds a folder.
/// @return nothing if that fails, or if the file system has no size
[[nodiscard]] std::optional<Capacity> readCapacity(const char* folder = kShareFolder);

/// "312 of 500 GB used, 188 GB free", in the units of a share status
[[nodiscard]] std::string formatCapacity(const Capacity& capacity);

} // namespace view
