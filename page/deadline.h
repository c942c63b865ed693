// SPDX-License-Identifier: MIT
//
// deadline.h: no page takes for ever, whatever the module's scripts do.
#pragma once

#include <chrono>
#include <string>

namespace page {

inline constexpr std::chrono::seconds kDeadline{30};

/// From now on there are so many seconds. When they are over, an answer goes to standard output as
/// it is now, and this process ends with all that it has started and that has not left its process
/// group. To be called once, before anything is started.
void endAfter(std::chrono::seconds patience, std::string answer);

} // namespace page
