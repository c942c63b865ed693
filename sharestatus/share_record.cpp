// SPDX-License-Identifier: MIT
//
// The two halves of a share's record: the space that it uses and the state of its last backup.
#include "sharestatus/share_record.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

#include "core/bytes.h"
#include "core/core.h"
#include "sharestatus/sharestatus.h"
#include "sharestatus/status_format.h"

namespace sharestatus {
namespace {

constexpr int kFailure = -1;

// Room for the text around a name, and for the longest name, which is one line.
constexpr std::size_t kNamedLineSize = core::kLineSize + 64;

void storeUsage(std::span<char, kDateOffset> out, std::int64_t kibibytes)
{
    const ScaledUsage usage = scaleUsage(kibibytes);
    core::putU16(out.subspan<kUsageOffset, kUsageSize>(), static_cast<std::uint16_t>(usage.value));
    out[kUnitOffset] = usage.unit;
    if (usage.unit == 'G') {
        dbg_trace("GetUserCapUsage system: %d%c", usage.value, usage.unit);
    }
}

/// Reads the output of du into the record's first three bytes.
bool readUsage(FILE* output, char* record)
{
    std::array<char, 256> line;
    if (!core::readLine(output, line)) {
        return false;
    }
    storeUsage(std::span<char, kDateOffset>(record, kDateOffset), core::decimalNumber(line.data()));
    return true;
}

bool measureShare(char* record, const char* name)
{
    std::array<char, kNamedLineSize> command;
    core::formatBounded(command, "du -sk \"/share/%s\" > %s", name, kCollectorFile);
    dbg_trace("GetUserCapUsage system: %s", command.data());
    if (!core::hasRun(core::runShellLine(command.data()))) {
        return false;
    }
    core::File output = core::openFile(kCollectorFile, "r");
    if (!output) {
        return false;
    }
    const bool isMeasured = readUsage(output.get(), record);
    output.reset();
    core::removeWorkFile(kCollectorFile);
    return isMeasured;
}

} // namespace

ScaledUsage scaleUsage(std::int64_t kibibytes)
{
    const auto* unit = std::ranges::find_if(
        kUnits, [kibibytes](const Unit& each) { return kibibytes <= each.most; });
    return {static_cast<int>(kibibytes / unit->kibibytes), unit->letter};
}

} // namespace sharestatus

int GetUserCapUsage(void* record, const char* name)
{
    if (sharestatus::measureShare(static_cast<char*>(record), name)) {
        return 0;
    }
    dbg_trace("GetUserCapUsage() return error 0x%X", static_cast<unsigned>(sharestatus::kFailure));
    return sharestatus::kFailure;
}

void GetUserBkStatus(void* record, const char* name)
{
    std::array<char, sharestatus::kNamedLineSize> path;
    core::formatBounded(path, "%s%s%s", sharestatus::kBackupStatusFolder,
                        sharestatus::kBackupStatusPrefix, name);
    dbg_trace("filename = %s", path.data());
    const core::File file = core::openFile(path.data(), "r");
    if (!file) {
        return;
    }

    std::array<char, 256> line;
    core::readLine(file.get(), line);
    dbg_trace("GetUserBkStatus %s ", line.data());
    // The file has the state first; the record has it last.
    const std::string_view text = line.data();
    if (text.size() > sharestatus::kDateSize) {
        char* out = static_cast<char*>(record);
        std::ranges::copy(text.substr(1, sharestatus::kDateSize), out + sharestatus::kDateOffset);
        out[sharestatus::kStateOffset] = text[0];
    }
}
