// SPDX-License-Identifier: MIT
//
// household.h: a history for the tests of what is shown of one.
#pragma once

#include "client/history_report.h"
#include "tests/history/entries.h"

namespace household {

using entries::kDay;
using entries::kMonday;

inline constexpr std::time_t kNow = kMonday + 40 * kDay; // 2026-02-14

/// The entry of a day, from kMonday on. "Media" grows and is renamed to "Films" on day 30, "Old"
/// goes after day 35, "Baby" comes on day 33, and "Broken" is never measured.
inline history::Entry entryOf(std::time_t day)
{
    history::Entry entry{.published = kMonday + day * kDay,
                         .hasList = true,
                         .capacity = view::Capacity{1000000, 400000, 600000},
                         .shares = {}};
    const auto grown = static_cast<std::uint64_t>(day) * 4000;
    entry.capacity->used += grown;
    entry.capacity->free -= grown;
    entry.shares.push_back(entries::share(day < 30 ? "Media" : "Films",
                                          static_cast<std::uint16_t>(100 + 4 * day),
                                          history::Folder{1, 1}));
    entry.shares.back().backupState = 1;
    entry.shares.back().backupDay = view::dayOf(entry.published);
    if (day <= 35) {
        entry.shares.push_back(entries::share("Old", 7, 'K'));
    }
    if (day >= 33) {
        entry.shares.push_back(entries::share("Baby \"\xFF", 5, 'G'));
    }
    entry.shares.push_back(entries::share("Broken", 0));
    entry.shares.back().used = {};
    return entry;
}

/// Remembers the days up to today.
inline void remember(std::time_t first = 0)
{
    history::Store store(entries::kFile);
    for (std::time_t day = first; day <= 40; ++day) {
        (void)store.remember(entryOf(day), kMonday);
    }
}

inline client::HistoryView lookedAt(int days, std::optional<std::time_t> published = kNow)
{
    return {.now = kNow + entries::kHour, .days = std::chrono::days(days), .published = published};
}

} // namespace household
