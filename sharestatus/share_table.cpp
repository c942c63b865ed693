// SPDX-License-Identifier: MIT
//
// The collector: from the list of shares to the share status buffer.
#include "sharestatus/sharestatus.h"

#include <array>
#include <span>

#include "core/core.h"
#include "sharestatus/fragment_walk.h"
#include "sharestatus/share_record.h"
#include "sharestatus/status_format.h"

namespace sharestatus {
namespace {

void collectRecords(char* fragment, TableWriter& table)
{
    FragmentWalk walk(fragment);
    while (table.hasRoom()) {
        const char* name = walk.next();
        if (name == nullptr) {
            return;
        }
        WorkRecord record{};
        GetUserCapUsage(record.data(), name);
        GetUserBkStatus(record.data(), name);
        table.append(record, name);
    }
}

} // namespace
} // namespace sharestatus

int ParseShareInfo(char* buffer, int size)
{
    using namespace sharestatus;

    const std::span<char> room(buffer, (size > 0) ? static_cast<std::size_t>(size) : 0);
    TableWriter table(room);
    if (room.size() < kHeaderSize) {
        return 0;
    }
    if (share_info(kCollectorFile) < 0) {
        dbg_trace("ParseShareInfo: failed get share infos: %d", -1);
        return 0;
    }
    core::File list = core::openFile(kCollectorFile, "r");
    if (!list) {
        return 0;
    }

    std::array<char, core::kLineSize> fragment{};
    if (core::readLine(list.get(), fragment)) {
        dbg_trace("pelParseShareInfo() share info buf: %s", fragment.data());
        collectRecords(fragment.data(), table);
    }
    list.reset();
    std::remove(kCollectorFile);
    table.finish();

    const int used = static_cast<int>(table.size());
    dbg_trace("ParseShare return user: %d - iLen: %d", table.count(), used);
    return used;
}
