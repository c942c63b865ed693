// SPDX-License-Identifier: MIT
//
// schema.h: the tables of the history (store.h describes them).
#pragma once

#include "history/database.h"

namespace history {

/// Makes the tables in a new file, and checks those of another.
/// Throws DatabaseError: kDamaged if the file holds something else, kOther if a later version of
/// this program has written it.
void makeSchema(const Database& database);

/// Whether there are tables to read. Throws as makeSchema() does.
[[nodiscard]] bool hasSchema(const Database& database);

} // namespace history
