// SPDX-License-Identifier: MIT
//
// response.h: a finished page, with the headers that keep it to itself.
#pragma once

#include <string>
#include <string_view>

#include "page/html.h"

namespace page {

struct Response {
    int status = 200;
    std::string nonce;    ///< of the page's own script
    std::string newToken; ///< for the browser to keep; empty where it has one
    Html page;
};

/// The headers, and the page behind them unless only the headers are wanted.
[[nodiscard]] std::string render(const Response& response, bool isHeadOnly);

} // namespace page
