// SPDX-License-Identifier: MIT
//
// reserved_names.h: names that neither users nor shares may have.
#pragma once

#pragma GCC visibility push(default)
extern "C" {

/// Whether users and shares may have a name: some names belong to the appliance's own folders.
/// Letters of both cases count as the same.
///
/// @return 1, or 0 for a reserved name
int isNameAllowed(const char* name);

} // extern "C"
#pragma GCC visibility pop
