// SPDX-License-Identifier: MIT
#include "handlers/reserved_names.h"

#include <algorithm>
#include <array>

#include "core/bytes.h"

namespace {

constexpr auto kReservedNames =
    std::to_array<const char*>({".", "..", "config", "lost+found", "__mediabolic", "__mt-daapd",
                                "__raclient", "__autoupdate"});

} // namespace

int isNameAllowed(const char* name)
{
    const bool isReserved = std::ranges::any_of(
        kReservedNames, [name](const char* each) { return core::equalIgnoringCase(name, each); });
    return isReserved ? 0 : 1;
}
