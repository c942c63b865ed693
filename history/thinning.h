// SPDX-License-Identifier: MIT
//
// thinning.h: which entries stay, and for how long.
#pragma once

#include <ctime>

#include "history/database.h"
#include "history/entry.h"

namespace history {

/// How long an entry stays. The file holds these numbers.
enum class Kept { kThirtyDays = 0, kTwoYears = 1, kForEver = 2 };

/// How long a new entry will stay: two years if it is the first of its day, for ever if it is the
/// first of its week, which begins on Monday; days and weeks are those of UTC. One without a list
/// of shares stays for thirty days.
[[nodiscard]] Kept keptAs(const Database& database, const Entry& entry);

/// Removes the entries whose time is over, and the shares of which nothing is left. In a
/// transaction of the caller's.
void thin(const Database& database, std::time_t now);

} // namespace history
