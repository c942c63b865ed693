// SPDX-License-Identifier: MIT
//
// clock.h: time as sessions and pauses count it: from the appliance's start, so that setting the
// appliance's clock neither ends them nor makes them last.
#pragma once

#include <chrono>

namespace page {

using Time = std::chrono::seconds;

[[nodiscard]] Time now();

} // namespace page
