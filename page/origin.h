// SPDX-License-Identifier: MIT
#pragma once

#include "page/request.h"

namespace page {

/// Refuses a form if the browser says that a page of another origin has sent it. The same host with
/// another port is another origin. Browsers that say nothing of it are not refused here.
void checkOrigin(const Request& request);

} // namespace page
