// SPDX-License-Identifier: MIT
//
// response.h: a finished page, with the headers that keep it to itself.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "page/html.h"
#include "page/pages.h"

namespace page {

struct Response {
    int status = 200;
    std::string nonce;                  ///< of the page's own script
    std::vector<Cookie> cookies = {};   ///< for the browser
    bool isSecure = false;              ///< whether cookies are for TLS alone
    std::string allowed;                ///< the methods that the page takes, if the status says so
    std::string location;               ///< the path of the page to show instead, if there is one
    std::chrono::seconds retryAfter{0}; ///< when to come again, if the status says so
    Html page;
};

/// The status of an answer that shows another page instead.
inline constexpr int kSeeOther = 303;

/// The headers, and the page behind them unless only the headers are wanted.
[[nodiscard]] std::string render(const Response& response, bool isHeadOnly);

} // namespace page
