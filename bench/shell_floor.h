// SPDX-License-Identifier: MIT
//
// shell_floor.h: compares work of the module with its floor: a bare loop that runs the same shell
// lines and does nothing else. With the guard before the shell, the floor leaves the traces out.
// Programs with it have a system() that records the lines.
#pragma once

#include <cstddef>
#include <functional>

#include "bench/alternation.h"

namespace bench {

struct FloorComparison {
    Comparison bare;
    Comparison guarded;
    std::size_t lines;  ///< run in one turn
    std::size_t traces; ///< of these
};

/// Does the work twice before: once because a process's first trace is different, and once to
/// record its lines.
[[nodiscard]] FloorComparison compareWithFloor(const std::function<void()>& work);

/// Prints the medians, with this name for the work.
void print(const char* name, const FloorComparison& outcome);

} // namespace bench
