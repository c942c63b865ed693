// SPDX-License-Identifier: MIT
//
// setup_apply.h: the end of the setup.
#pragma once

#include <string>
#include <vector>

#include "page/public_share.h"
#include "page/setup_form.h"

namespace page {

/// Stores what was chosen; the values must be good ones. What can be stored is stored, whatever
/// fails beside it; only when all of it is does the first run count as done. The name of the public
/// share is stored if there is such a share.
/// @param share  what has become of the public share
/// @return what failed, in words
[[nodiscard]] std::vector<std::string> applySetup(const SetupValues& values,
                                                  const PublicShare& share);

} // namespace page
