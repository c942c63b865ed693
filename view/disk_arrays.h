// SPDX-License-Identifier: MIT
//
// disk_arrays.h: the arrays that the appliance's disks form, and their health, as the kernel shows
// them in /proc/mdstat.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace view {

/// What an array does besides its work.
struct ArrayTask {
    enum class Kind {
        kRebuild, ///< a disk is filled with what others hold, so that it can fail without loss
        kCheck,   ///< all disks are compared, or made alike for the first time
        kReshape, ///< the array gets another shape, such as one more disk
    };

    Kind kind = Kind::kCheck;
    bool isWaiting = false;               ///< it begins later
    unsigned percent = 0;                 ///< done, cut off
    std::optional<unsigned> minutes = {}; ///< that remain, by the kernel's guess, rounded up
};

struct DiskArray {
    std::string name;       ///< "md0"
    std::string level = {}; ///< "raid1"; empty if the kernel does not say
    bool isRunning = false;
    unsigned wanted = 0;  ///< disks that it is made for; 0 if it does without spare data
    unsigned working = 0; ///< those of them that work
    std::vector<std::string> failed = {}; ///< the disks that have failed, such as "sdb1"
    std::optional<ArrayTask> task = {};

    /// Whether another disk must not fail, as it lacks one already.
    [[nodiscard]] bool isDegraded() const { return working < wanted; }
};

/// The arrays of a text like /proc/mdstat, in its order. What is not understood is passed over.
[[nodiscard]] std::vector<DiskArray> parseDiskArrays(std::string_view text);

/// Reads /proc/mdstat. There is none if the kernel has no arrays.
[[nodiscard]] std::vector<DiskArray> readDiskArrays(const char* file = "/proc/mdstat");

} // namespace view
