// SPDX-License-Identifier: MIT
//
// plot.h: the space that a share used over time, as a picture. It is made of SVG without style of
// its own, since the pages allow none; sizes and places are parts of the whole, so the words in it
// have the size of the page's text however wide the window is.
#pragma once

#include <cstdint>
#include <ctime>
#include <vector>

#include "page/html.h"

namespace page {

struct PlotPoint {
    std::time_t time = 0;
    std::uint64_t kibibytes = 0;
};

/// A plot with axes, a line and a mark for each point.
/// @param points    at least one, the oldest first, all between the two times
/// @param describedBy  the element whose text says what the plot shows
[[nodiscard]] Html plot(const std::vector<PlotPoint>& points, std::time_t first, std::time_t last,
                        Literal describedBy);

} // namespace page
