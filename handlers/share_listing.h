// SPDX-License-Identifier: MIT
//
// share_listing.h: the share script's listing of all shares, for the commands that read it.
#pragma once

#include <cstdio>

#include "handlers/handler.h"

namespace handlers {

/// Has the share script write its listing into a file.
///
/// @param command  the handler's name, which begins the trace
/// @return whether the script succeeded
///
/// Runs the share script's tovGetShareList. Traces the line and its result.
[[nodiscard]] bool fetchShareListing(const char* command, const char* path);

/// Opens a listing in the current-file slot.
/// @return null if it cannot be opened; then it is removed. Traces that.
[[nodiscard]] FILE* openShareListing(Channel& channel, const char* path);

} // namespace handlers
