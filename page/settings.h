// SPDX-License-Identifier: MIT
//
// settings.h: what an administrator of the appliance can say about its pages.
#pragma once

#include <string>
#include <vector>

namespace page {

struct Settings {
    std::string socket = "/run/vokcontrol.sock"; ///< where the service listens
    std::vector<std::string> administrators;     ///< accounts that may change things
};

} // namespace page
