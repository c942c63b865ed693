// SPDX-License-Identifier: MIT
//
// gate.h: what may pass from a client to the module. The module hands names to the shell as they
// stand; here every request is looked at first, and one that could make the shell do anything of
// its sender's choosing is never dispatched.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace service {

/// Why a request does not pass.
struct Refusal {
    std::string_view parameter; ///< which one it is; never its text
    std::string answer;         ///< the command's own answer to malformed parameters
};

/// @param request  at most 4096 bytes
/// @return nothing for a request that passes; unknown commands do, for the dispatcher to answer
[[nodiscard]] std::optional<Refusal> examine(std::string_view request);

} // namespace service
