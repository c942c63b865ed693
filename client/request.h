// SPDX-License-Identifier: MIT
//
// request.h: a request to the command service, from its bytes to the bytes that come back.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
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

/// A request frame: code, blank, count and newline; parameters follow it.
[[nodiscard]] std::string makeFrame(std::string_view code, std::uint32_t count);

/// The answer, or why there is none.
struct Reply {
    ExitCode code = kGood;
    std::string bytes;
    std::string complaint;
};

/// Sends a frame and waits for the whole answer.
[[nodiscard]] Reply sendRequest(const Connection& connection, std::string_view frame);

} // namespace client
