// SPDX-License-Identifier: MIT
//
// writing.h: an entry's rows.
#pragma once

#include "history/database.h"
#include "history/entry.h"
#include "history/thinning.h"

namespace history {

/// Adds an entry whose time is not in the history yet. In a transaction of the caller's.
///
/// A share is known by its name. If a name is new, but its folder is one that the history knows
/// under a name that the entry does not have, then that share has been renamed: it goes on under
/// its new name. Otherwise the share is new. Of a name that the entry has twice, the first counts.
void insertEntry(const Database& database, const Entry& entry, Kept kept);

} // namespace history
