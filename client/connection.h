// SPDX-License-Identifier: MIT
//
// connection.h: the way to the command service: a request's bytes go there, the answer's come back.
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
    bool anyServer = false; ///< ask whoever serves, also if it is neither root nor oneself
};

/// The answer, or why there is none.
struct Reply {
    ExitCode code = kGood;
    std::string bytes;
    std::string complaint;
};

/// The longest answers: of any command, and of a command that answers no file.
inline constexpr std::size_t kLongestAnswer = std::size_t{16} << 20;
inline constexpr std::size_t kLongestTextAnswer = std::size_t{1} << 20;

/// Sends a frame and waits for the whole answer. Nothing is sent unless root or oneself serves (of
/// a socket that systemd listens at, that is systemd) or the connection allows for any server.
/// Throws config::BadConfiguration.
/// @param longest  the size in bytes above which there is no answer but a complaint
/// @throws config::BadConfiguration
[[nodiscard]] Reply sendRequest(const Connection& connection, std::string_view frame,
                                std::size_t longest = kLongestAnswer);

} // namespace client
