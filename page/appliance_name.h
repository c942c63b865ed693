// SPDX-License-Identifier: MIT
//
// appliance_name.h: what the appliance is called, at the top of each page.
#pragma once

#include <string>

#include "page/sessions.h"

namespace page {

/// Asks the appliance (the variable "machine_name"), and keeps the name for pages that cannot ask.
[[nodiscard]] std::string askApplianceName(const std::string& folder = kStateFolder);

/// The name as it was last asked for, or else the kernel's name of this machine. Runs nothing, so
/// that it is for pages that say what went wrong. Empty if neither can be had.
[[nodiscard]] std::string lastApplianceName(const std::string& folder = kStateFolder);

} // namespace page
