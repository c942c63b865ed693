// SPDX-License-Identifier: MIT
//
// overview_arrays.h: the health of the disks on the overview.
#pragma once

#include <vector>

#include "page/html.h"
#include "view/disk_arrays.h"

namespace page {

/// A card with a line for each array; nothing if the disks form none.
[[nodiscard]] Html arraysCard(const std::vector<view::DiskArray>& arrays);

} // namespace page
