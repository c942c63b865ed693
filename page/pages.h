// SPDX-License-Identifier: MIT
//
// pages.h: the pages, and what each is given to make itself.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "config/configuration.h"
#include "page/html.h"
#include "page/request.h"
#include "page/script.h"
#include "page/visitor.h"

namespace page {

/// One request for a page. All work that may print goes through the script.
struct Visit {
    const Request& request;
    const config::Configuration& settings;
    const Visitor& visitor;
    std::string token; ///< for the hidden field of forms
    Script& script;
};

/// What a browser is to keep, or to forget if it has no value.
struct Cookie {
    std::string_view name;
    std::string value;
    std::chrono::seconds kept{0}; ///< 0: until the browser ends
};

/// What a page makes of itself; the frame around it comes with layOut().
struct Page {
    std::string title = {};
    Html body = {};
    Html head = {};          ///< what is added to the head of the page
    bool isFragment = false; ///< the body is the whole answer, for a script of a page to put in
    int status = 200;
    std::optional<std::string_view> next = {}; ///< the path of the page that is shown instead
    std::string nextQuery = {};                ///< that follows that path, with its "?"
    std::vector<Cookie> cookies = {};
    std::chrono::seconds retryAfter{0}; ///< when to come again, if the status says so
};

[[nodiscard]] Page makeOverview(Visit& visit);
[[nodiscard]] Page makeShare(Visit& visit);
[[nodiscard]] Page makeShares(Visit& visit);
[[nodiscard]] Page makeUsers(Visit& visit);
[[nodiscard]] Page makeCollection(Visit& visit);
[[nodiscard]] Page makePasswordCheck(Visit& visit);
[[nodiscard]] Page makeSetup(Visit& visit);
[[nodiscard]] Page makeSync(Visit& visit);
[[nodiscard]] Page makeLogin(Visit& visit);
[[nodiscard]] Page makeLogout(Visit& visit);
[[nodiscard]] Page makeFirstAdministrator(Visit& visit);
[[nodiscard]] Page makeLanguage(Visit& visit);
[[nodiscard]] Page makeHelp(Visit& visit);

} // namespace page
