// SPDX-License-Identifier: MIT
//
// setup_apply.h: the end of the setup.
#pragma once

#include <string>
#include <vector>

#include "page/setup_form.h"

namespace page {

/// Stores what was chosen; the values must be good ones. What can be stored is stored, whatever
/// fails beside it; only when all of it is does the first run count as done.
/// @return what failed, in words
[[nodiscard]] std::vector<std::string> applySetup(const SetupValues& values);

} // namespace page
