// SPDX-License-Identifier: MIT
//
// overview_capacity.h: how full the disk is, and which shares fill it.
#pragma once

#include <optional>

#include "page/html.h"
#include "view/judgement.h"

namespace page {

/// A card with the sentence that "vokctl status" begins with, a bar whose parts are the largest
/// shares, and a legend that says the same as the bar.
/// @param daysUntilFull  when the disk will be full; nothing if nobody can say it
/// @param action         stands beside the sentence
[[nodiscard]] Html capacityCard(const view::Situation& situation,
                                const std::optional<double>& daysUntilFull, const Html& action);

} // namespace page
