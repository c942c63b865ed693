// SPDX-License-Identifier: MIT
//
// overview_devices.h: the drives and printers on the overview.
#pragma once

#include <optional>
#include <vector>

#include "page/devices.h"
#include "page/html.h"

namespace page {

/// A card with a line for each device.
/// @param devices  nothing if the appliance has not said what is attached
[[nodiscard]] Html devicesCard(const std::optional<std::vector<Device>>& devices);

} // namespace page
