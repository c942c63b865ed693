// SPDX-License-Identifier: MIT
//
// clock.h: what time() says in a test's program.
#pragma once

#include <ctime>
#include <optional>

namespace root {

/// The time that everybody in this program is told; without a value, the real one.
extern std::optional<std::time_t> clock;

} // namespace root
