// SPDX-License-Identifier: MIT
//
// share_listing.h: makes and opens the share script's listing of all shares.
#pragma once

#include <cstdio>

#include "handlers/handler.h"

namespace handlers {

/// Has the share script write its listing into a file.
///
/// @param command  the handler's name, the first word of the trace
/// @return whether the script succeeded
///
/// Runs the share script's tovGetShareList. Traces the line and its result.
[[nodiscard]] bool fetchShareListing(const char* command, const char* path);

/// Opens a listing in the current-file slot.
/// @return null if it cannot be opened; then it is removed. Traces that.
[[nodiscard]] FILE* openShareListing(Channel& channel, const char* path);

} // namespace handlers
