// SPDX-License-Identifier: MIT
//
// course.h: a share's last days beside its name: a small line, and its change in words.
#pragma once

#include <chrono>
#include <ctime>
#include <string>
#include <vector>

#include "history/reader.h"
#include "page/html.h"

namespace page {

/// "+1.2 GB in 30 days": the change up to the last entry, over as many days as there are entries
/// for, at most those given. Empty if they span less than a day, or the change is not known.
/// @param points  the oldest first
[[nodiscard]] std::string wordChange(const std::vector<history::Point>& points,
                                     std::chrono::days most);

/// The line of the 30 days before a time, for those who look, and the change in words, for all.
/// Nothing if the points span less than a day.
[[nodiscard]] Html courseOf(const std::vector<history::Point>& points, std::time_t now);

} // namespace page
