// SPDX-License-Identifier: MIT
//
// pages.h: the pages, and what each is given to make itself.
#pragma once

#include <string>
#include <string_view>

#include "page/html.h"
#include "page/request.h"
#include "page/script.h"

namespace page {

/// One request for a page. All work that may print goes through the script.
struct Visit {
    const Request& request;
    std::string token; ///< for the hidden field of forms
    Script& script;
};

/// What a page makes of itself; the frame around it comes with layOut().
struct Page {
    std::string title;
    Html body;
};

[[nodiscard]] Page makeOverview(Visit& visit);
[[nodiscard]] Page makeSetup(Visit& visit);
[[nodiscard]] Page makeSync(Visit& visit);

} // namespace page
