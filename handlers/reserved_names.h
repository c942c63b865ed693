// SPDX-License-Identifier: MIT
//
// reserved_names.h: names that neither users nor shares may have.
#pragma once

#pragma GCC visibility push(default)
extern "C" {

/// Whether a name is free for people to use: the appliance keeps some folders to itself. Letters of
/// both cases count as the same.
///
/// @return 1, or 0 for a reserved name
int isNameAllowed(const char* name);

} // extern "C"
#pragma GCC visibility pop
