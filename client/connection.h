// SPDX-License-Identifier: MIT
//
// connection.h: the way to the command service: a request's bytes go there, the answer's come back.
#pragma once

#include <string>
#include <string_view>

#include "client/exit_codes.h"

namespace client {

/// How to reach the service.
struct Connection {
    std::string socket = "/run/vokcontrol.sock";
    unsigned timeout = 90;
};

/// The answer, or why there is none.
struct Reply {
    ExitCode code = kGood;
    std::string bytes;
    std::string complaint;
};

/// Sends a frame and waits for the whole answer.
[[nodiscard]] Reply sendRequest(const Connection& connection, std::string_view frame);

} // namespace client
