// SPDX-License-Identifier: MIT
//
// reasons.h: why a request has failed, in the words of the appliance's own programs. The service
// hands over what they wrote to standard error, in a file beside the first bytes of the answer.
#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

namespace client {

/// The first bytes of an answer, and what came with them.
struct FirstPiece {
    std::string bytes;
    std::string reasons; ///< at most 4096 bytes of any kind; empty if the programs said nothing
};

/// Receives what is there first. It is empty if nothing comes in time, the connection has ended, or
/// it fails: whoever reads on learns which.
/// @param socket   a connected Unix socket
/// @param longest  at most so many bytes are received
[[nodiscard]] FirstPiece receiveFirst(int socket, std::size_t longest,
                                      std::chrono::milliseconds patience);

/// The first five lines of such a text that are not empty, safe for a terminal, each cut to 200
/// columns or so.
[[nodiscard]] std::vector<std::string> reasonLines(std::string_view reasons);

} // namespace client
