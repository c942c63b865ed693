// SPDX-License-Identifier: MIT
//
// connection.h: sends a request's bytes to the service and receives those of the answer.
#pragma once

#include <cstddef>
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
    bool anyServer = false; ///< send the request even if neither root nor this user serves
};

/// The answer, or why there is none.
struct Reply {
    ExitCode code = kGood;
    std::string bytes = {};
    std::string complaint = {};
    std::string reasons = {}; ///< what the appliance's programs wrote to standard error (reasons.h)
};

/// The longest answers: of any command, and of a command whose answer is not a file.
inline constexpr std::size_t kLongestAnswer = std::size_t{16} << 20;
inline constexpr std::size_t kLongestTextAnswer = std::size_t{1} << 20;

/// Sends a request and waits for the whole answer. Sends nothing if neither root nor this user
/// serves (if systemd listens on the socket, its user counts), unless anyServer is set.
/// @param longest  a longer answer, in bytes, is a failure
/// @throws config::BadConfiguration
[[nodiscard]] Reply sendRequest(const Connection& connection, std::string_view frame,
                                std::size_t longest = kLongestAnswer);

} // namespace client
