// SPDX-License-Identifier: MIT
//
// plot_axes.h: where the axes of a plot have their ticks, and what is written there.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

namespace page {

/// The sizes that the lines of a plot stand for, in KiB, at equal distances: at least two, at most
/// six. The first is at the bottom of the plot and the last at its top, so all sizes from "least"
/// to "most" lie between them. The bottom is 0 unless the sizes are close together, yet not as
/// close as what can be told apart.
[[nodiscard]] std::vector<std::uint64_t> sizeTicks(std::uint64_t least, std::uint64_t most);

struct TimeTick {
    std::time_t time = 0; ///< the beginning of a day, local time
    std::string label;    ///< "16 Nov", "Nov 2026", "Nov" or "2026"

    bool operator==(const TimeTick&) const = default;
};

/// Days between two times: at most seven, whatever the distance, and at least one if the times are
/// a day and less than 60 years apart.
[[nodiscard]] std::vector<TimeTick> timeTicks(std::time_t first, std::time_t last);

} // namespace page
