// SPDX-License-Identifier: MIT
//
// connection.h: the way to the command service: a request's bytes go there, the answer's come back.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "client/exit_codes.h"
#include "config/configuration.h"

namespace client {

/// How to reach the service, if not as the configuration file says.
struct Connection {
    std::optional<std::string> socket = {};
    std::optional<unsigned> timeout = {}; ///< seconds
    std::string file = config::kDefaultFile;
};

/// The answer, or why there is none.
struct Reply {
    ExitCode code = kGood;
    std::string bytes;
    std::string complaint;
};

/// Sends a frame and waits for the whole answer. Throws config::BadConfiguration.
[[nodiscard]] Reply sendRequest(const Connection& connection, std::string_view frame);

} // namespace client
