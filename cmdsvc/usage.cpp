// SPDX-License-Identifier: MIT
//
// init_cmd_buffer and save_cmd_cnt: how often each command was received.
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <limits>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

#include "cmdsvc/protocol.h"
#include "core/bytes.h"
#include "core/core.h"

namespace cmdsvc {
namespace {

constexpr std::int64_t kSaveIntervalSeconds = 300;

struct Slot {
    std::string_view code;
    bool isCounted;
};

/// The slots in their order. "gub1" has a slot, but counts in the last one, which has no code;
/// "cpbu" has a slot, but no handler.
constexpr auto kSlots = std::to_array<Slot>({
    {"crat", true}, {"shar", true}, {"lstu", true}, {"lsts", true},  {"vers", true},
    {"host", true}, {"spvt", true}, {"gpvt", true}, {"frst", true},  {"qlps", true},
    {"dscr", true}, {"ipcf", true}, {"sub1", true}, {"gub1", false}, {"gps1", true},
    {"gsp1", true}, {"cpbu", true}, {"pshr", true}, {"sgss", true},  {"rtov", true},
});
constexpr std::size_t kOtherSlot = kSlots.size();
constexpr std::size_t kSlotSize = kCodeSize + kWordSize;
static_assert((kSlots.size() + 1) * kSlotSize == VOK_USAGE_SIZE);

std::span<char> slotBytes(CommandUsage& table, std::size_t slot)
{
    return std::span(reinterpret_cast<char*>(table.bytes), sizeof table.bytes)
        .subspan(slot * kSlotSize, kSlotSize);
}

bool isPrepared(CommandUsage& table)
{
    const std::span<char> code = slotBytes(table, 0).first<kCodeSize>();
    return std::string_view(code.data(), code.size()) == kSlots[0].code;
}

/// The slot that counts a command; nothing if the command has no slot of its own.
std::optional<std::size_t> slotOf(std::uint32_t code)
{
    const auto* slot = std::ranges::find_if(
        kSlots, [code](const Slot& each) { return each.isCounted && codeWord(each.code) == code; });
    if (slot == kSlots.end()) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(slot - kSlots.begin());
}

void count(CommandUsage& table, std::size_t slot)
{
    const auto counter = slotBytes(table, slot).subspan<kCodeSize, kWordSize>();
    core::putU32(counter, core::getU32(counter) + 1);
}

/// The time in seconds since the epoch, until 2106 also on machines whose clock has only 32 bits.
std::int64_t currentTime()
{
    return static_cast<std::uint32_t>(std::time(nullptr));
}

/// The last save as a time that can be compared with the clock. The caller keeps 32 signed bits. In
/// 2038 the clock exceeds their range; from then on a negative value means a later save.
std::int64_t timeOf(std::int32_t lastSave, std::int64_t now)
{
    const bool isPastSignedRange = now > std::numeric_limits<std::int32_t>::max();
    return isPastSignedRange ? std::int64_t{static_cast<std::uint32_t>(lastSave)}
                             : std::int64_t{lastSave};
}

/// Whether the table must be written. A last save of 0 means that there was none. The comparison
/// has 64 bits, so it does not wrap at the end of the 32-bit range.
bool isDue(std::int32_t lastSave, std::int64_t now)
{
    return lastSave == 0 || now > timeOf(lastSave, now) + kSaveIntervalSeconds;
}

/// Writes a table to an open file.
/// @return whether it was written whole; errno says why not
bool write(const CommandUsage& table, core::File file)
{
    const bool isWritten =
        std::fwrite(table.bytes, 1, sizeof table.bytes, file.get()) == sizeof table.bytes;
    return std::fclose(file.release()) == 0 && isWritten;
}

void save(const CommandUsage& table, std::int32_t& lastSave, std::uint32_t code, std::int32_t now)
{
    core::File file = core::openFile(VOK_USAGE_FILE, "w");
    if (!file) {
        dbg_trace("save_cmd_cnt() -- failed open file syserr: %s", std::strerror(errno));
        return;
    }
    if (!write(table, std::move(file))) {
        dbg_trace("cannot write file %s: %s", VOK_USAGE_FILE, std::strerror(errno));
        return;
    }
    dbg_trace("save_cmd_cnt() -- save to file cmd: 0x%X time: %d", code, now);
    lastSave = now;
}

} // namespace
} // namespace cmdsvc

void init_cmd_buffer(CommandUsage* table)
{
    using namespace cmdsvc;

    if (isPrepared(*table)) {
        return;
    }
    core::File file = core::openFile(VOK_USAGE_FILE, "r");
    if (file) {
        [[maybe_unused]] const std::size_t got =
            std::fread(table->bytes, 1, sizeof table->bytes, file.get());
        file.reset();
        dbg_trace("init_cmd_buffer() -- read from file %s", VOK_USAGE_FILE);
        return;
    }
    for (std::size_t slot = 0; slot < kSlots.size(); ++slot) {
        std::ranges::copy(kSlots[slot].code, slotBytes(*table, slot).begin());
    }
    dbg_trace("init_cmd_buffer() -- return %s", " ");
}

void save_cmd_cnt(CommandUsage* table, std::int32_t* lastSave, std::uint32_t code)
{
    using namespace cmdsvc;

    if (table == nullptr) {
        dbg_trace("save_cmd_cnt() -- failed  -- pCmdCnt==NULL %s", " ");
        return;
    }
    dbg_trace("save_cmd_cnt() -- save cmd: 0x%X", code);
    const std::optional<std::size_t> slot = slotOf(code);
    count(*table, slot.value_or(kOtherSlot));
    if (!slot) {
        dbg_trace("save_cmd_cnt() -- save default cmd: 0x%X", code);
    }
    const std::int64_t now = currentTime();
    if (isDue(*lastSave, now)) {
        save(*table, *lastSave, code, static_cast<std::int32_t>(now));
    }
}
