// SPDX-License-Identifier: MIT
//
// visitor.h: who asks for a page, and which pages may be asked for by whom.
#pragma once

#include <string>

#include "config/configuration.h"
#include "page/request.h"
#include "page/script.h"

namespace page {

struct Visitor {
    std::string account; ///< empty if nobody has logged in
    bool isAdministrator = false;
    bool hasSession = false; ///< otherwise the web server has said who it is
    /// Nobody has logged in, the first setup is pending, and the appliance has no administrator:
    /// anybody may make one.
    bool mayBegin = false;
    std::string formToken; ///< what the visitor's forms carry; empty if the browser has none yet
};

/// If the settings trust the web server, it alone says who asks; without a name it is refused.
/// @param script  takes what is printed meanwhile
[[nodiscard]] Visitor identify(const Request& request, const config::Configuration& settings,
                               Script& script);

/// Who may read a page, or send it a form.
enum class Level {
    kAdministrator,
    kAccount,  ///< whoever has logged in
    kNewcomer, ///< who may make the first administrator
    kAnybody,
};

[[nodiscard]] bool admits(Level level, const Visitor& visitor);

/// Refuses a POST whose form does not carry the visitor's token: it may come from a page of
/// somebody else.
void checkToken(const Request& request, const Visitor& visitor);

} // namespace page
