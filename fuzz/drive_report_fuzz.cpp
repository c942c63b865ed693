// SPDX-License-Identifier: MIT
//
// Runs every reader of the report on the attached drives.
#include <array>
#include <cstring>

#include "fuzz/fuzz.h"
#include "fuzz/shell_stub.h"
#include "vokcontrol.h"

namespace {

constexpr std::size_t kValueSize = 512;

void checkDrives()
{
    std::array<DriveInfo, 4> drives{};
    fuzz::require(getDriveInfos(drives.data()) == 0);
    for (const DriveInfo& drive : drives) {
        fuzz::require(drive.isUsb == 0 || drive.isUsb == 1);
    }
}

void checkInternalDisks()
{
    std::array<std::int32_t, 2> indices{};
    fuzz::require(getInternalHDDIndex(indices.data()) == 0);
    const char* device = getInternalHDDDev();
    fuzz::require(std::strlen(device) < kValueSize);
    printTovHDDs();
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::emptyFolder("/tmp");
    fuzz::setShell(0, fuzz::textOf(data, size));
    checkDrives();
    checkInternalDisks();
    return 0;
}
