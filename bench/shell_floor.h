// SPDX-License-Identifier: MIT
//
// shell_floor.h: some of the module's work against its floor: a bare loop that runs the very same
// shell lines and does nothing else. With the guard before the shell, the floor is the lines that
// are no traces. Programs with it have a system() that writes down the lines.
#pragma once

#include <cstddef>
#include <functional>

#include "bench/alternation.h"

namespace bench {

struct FloorComparison {
    Comparison bare;
    Comparison guarded;
    std::size_t lines;  ///< that one turn runs
    std::size_t traces; ///< of these
};

/// Does the work twice beforehand: once so that this process has traced already, and once to write
/// its lines down.
[[nodiscard]] FloorComparison compareWithFloor(const std::function<void()>& work);

/// Prints the medians; the work's own line has this name.
void print(const char* name, const FloorComparison& outcome);

} // namespace bench
