// SPDX-License-Identifier: MIT
//
// disk_judgement.h: what is wrong with the appliance's disks; a part of the judgement.
#pragma once

#include <vector>

#include "view/disk_arrays.h"
#include "view/judgement.h"

namespace view {

/// Adds a finding for each array that does not run, lacks a disk, is being rebuilt, or has a failed
/// disk that a spare one stands in for.
void judgeArrays(const std::vector<DiskArray>& arrays, std::vector<Finding>& out);

} // namespace view
