// SPDX-License-Identifier: MIT
//
// gate.h: checks each request before the module gets it. The module puts names into shell lines
// unchanged, so a request that could make the shell do what its sender chooses is refused here.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace service {

/// Why a request is refused.
struct Refusal {
    std::string_view parameter; ///< its name, never its text
    std::string answer;         ///< the same as the command's answer to malformed parameters
};

/// @param request  at most 4096 bytes
/// @return nothing for a request that passes. Unknown commands pass; the dispatcher answers them
[[nodiscard]] std::optional<Refusal> examine(std::string_view request);

} // namespace service
