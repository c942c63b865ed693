// SPDX-License-Identifier: MIT
//
// process.h: looking for a program among the processes.
#pragma once

#include <string_view>

namespace page {

inline constexpr std::string_view kSyncDaemon = "tidewaved";

/// Whether a process of that name runs: at most 15 characters count.
[[nodiscard]] bool isProcessRunning(std::string_view name);

} // namespace page
