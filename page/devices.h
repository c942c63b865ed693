// SPDX-License-Identifier: MIT
//
// devices.h: the module's records of disks and printers, as a reader understands them.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "vokcontrol.h"

namespace page {

struct Device {
    enum class Kind { kInternalDisk, kUsbDisk, kUsbPrinter };

    Kind kind;
    std::string name; ///< of a disk, its device name; of a printer, what it is called
    std::string vendor;
    std::string model;
    std::string serial;
    std::string capacity; ///< in GB; printers have none
};

/// Records that nothing was written to are left out. A USB device without a capacity is a printer.
/// Where a printer shares its serial number with a disk before it (both are one piece of hardware),
/// its name stands in the disk's record; it goes back to the printer.
[[nodiscard]] std::vector<Device> readDevices(std::span<const DriveInfo> records);

} // namespace page
