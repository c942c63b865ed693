// SPDX-License-Identifier: MIT
//
// connection.h: the way to the command service: a request's bytes go there, the answer's come back.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <string_view>

#include "client/exit_codes.h"

namespace client {

/// How to reach the service; every subcommand that needs it takes these options.
struct Connection {
    std::string socket = "/run/vokcontrol.sock";
    unsigned timeout = 90;
};

void addConnectionOptions(CLI::App& command, Connection& connection);

/// The answer, or why there is none.
struct Reply {
    ExitCode code = kGood;
    std::string bytes;
    std::string complaint;
};

/// Sends a frame and waits for the whole answer.
[[nodiscard]] Reply sendRequest(const Connection& connection, std::string_view frame);

} // namespace client
