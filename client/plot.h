// SPDX-License-Identifier: MIT
//
// plot.h: a course over time as lines of text. Values in, text out.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

namespace client {

struct PlotPoint {
    std::time_t time;
    std::uint64_t kibibytes;
};

/// Eight lines of sixty columns, with the largest and the smallest size at the left and the first
/// and the last day below. A column has the largest size of its time; one without a point is blank,
/// so that what is not known is a gap. Nothing for fewer than two points, and of equal sizes one
/// line. In ASCII, for terminals of every kind.
/// @param points  the oldest first
[[nodiscard]] std::string renderPlot(const std::vector<PlotPoint>& points);

} // namespace client
