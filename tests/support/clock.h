// SPDX-License-Identifier: MIT
//
// clock.h: sets what time() returns in a test's program.
#pragma once

#include <ctime>
#include <optional>

namespace root {

/// What time() returns in this program; the real time if empty.
extern std::optional<std::time_t> clock;

} // namespace root
