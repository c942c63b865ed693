// SPDX-License-Identifier: MIT
#include "handlers/drives.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "core/core.h"
#include "sharestatus/share_record.h"

namespace handlers {
namespace {

constexpr const char* kWorkFile = "/tmp/vokcontrol2.tmp";

using Line = std::array<char, 256>;

/// Reads a command's first line of output.
/// @return false if there is no line; LINE is then empty
bool readOutput(Line& line)
{
    line[0] = '\0';
    const core::File output = core::openFile(kWorkFile, "r");
    return output && core::readLine(output.get(), line);
}

/// Runs one of the lines that print a capacity.
bool runProbe(const char* command)
{
    dbg_trace("GetInternalDiskCap() system: %s", command);
    return core::runShellLine(command).result != -1;
}

/// The size of the first disk.
int askFdisk()
{
    constexpr std::string_view kLabel = "/dev/sda: ";
    core::CommandLine command;
    core::formatBounded(command, "fdisk -lu %s | grep /dev/sda: > %s", "/dev/sda", kWorkFile);
    Line line;
    if (!runProbe(command.data())) {
        return 0;
    }
    readOutput(line);
    dbg_trace("GetInternalDiskCap() buf: %s", line.data());
    const char* label = std::strstr(line.data(), kLabel.data());
    if (label == nullptr) {
        return 0;
    }
    const char* number = label + kLabel.size();
    const int capacity = core::decimalInt(number);
    dbg_trace("Drive cap: %d GB -- ptr: %s", capacity, number);
    return capacity;
}

/// The size of the mirror: mdadm prints it in GiB and, four characters after that word, in GB.
/// @param otherwise  the result if mdadm prints no size
int askMdadm(int otherwise)
{
    constexpr std::size_t kSkipped = 4;
    core::CommandLine command;
    core::formatBounded(command, "mdadm --detail /dev/md0 | grep GiB > %s", kWorkFile);
    Line line;
    if (!runProbe(command.data()) || !readOutput(line)) {
        return otherwise;
    }
    const char* label = std::strstr(line.data(), "GiB");
    if (label == nullptr) {
        return otherwise;
    }
    return core::decimalInt(label + std::min(kSkipped, std::strlen(label)));
}

int cutTo16Bits(int capacity)
{
    return static_cast<std::uint16_t>(capacity);
}

/// The number in the first line that pelparam printed.
int readCount(const char* path)
{
    constexpr int kDefault = 1;
    const core::File output = core::openFile(path, "r");
    if (!output) {
        dbg_trace("GetTovHDDS failed open file %s, strerr: %s", path, std::strerror(errno));
        return kDefault;
    }
    return core::readNumber(output.get(), kDefault);
}

} // namespace
} // namespace handlers

int GetTovHDDS(void)
{
    const core::WorkFileName path = core::workFileName("GetTovHDDS");
    core::CommandLine command;
    core::formatBounded(command, "sudo pelparam -d > %s", path.data());
    const core::ShellRun run = core::runShellLine(command.data());
    if (run.result < 0) {
        dbg_trace("GetTovHDDS failed system(%s), iRet:%d, strerr: %s", command.data(), run.result,
                  std::strerror(run.error));
        return run.result;
    }
    const int count = handlers::readCount(path.data());
    removeFile(path.data());
    return (run.result != 0) ? run.result : count;
}

int GetInternalDiskCap(void)
{
    using namespace handlers;

    int capacity = askFdisk();
    const int drives = GetTovHDDS();
    if (drives < 0 || drives == 1) {
        return cutTo16Bits(capacity);
    }
    if (drives == 2) {
        capacity = askMdadm(capacity);
    }
    core::removeWorkFile(kWorkFile);
    dbg_trace("GetInternalDiskCap: %d GB", capacity);
    return cutTo16Bits(capacity);
}

int GetUserCapUsage(const char* name, int* size, char* unit)
{
    using namespace handlers;

    std::array<char, core::kLineSize + 64> command;
    core::formatBounded(command, "du -sk \"/share/%s\" > %s", name, kWorkFile);
    dbg_trace("GetUserCapUsage system: %s", command.data());
    const bool hasRun = core::hasRun(core::runShellLine(command.data()));
    dbg_trace("GetUserCapUsage system: %s", command.data());
    Line line;
    const bool isRead = hasRun && readOutput(line);
    std::remove(kWorkFile);
    if (!isRead) {
        constexpr int kFailure = -1;
        dbg_trace("GetUserCapUsage() return error 0x%X", static_cast<unsigned>(kFailure));
        return kFailure;
    }
    const sharestatus::ScaledUsage usage =
        sharestatus::scaleUsage(core::decimalNumber(line.data()));
    dbg_trace("GetUserCapUsage system: %d%c", usage.value, usage.unit);
    *size = usage.value;
    *unit = usage.unit;
    return 0;
}
