// SPDX-License-Identifier: MIT
//
// scripted_service.h: a service that gives answers made up by a test.
#pragma once

#include <string>
#include <vector>

#include "tests/support/root.h"

namespace root {

/// A listening socket at a path.
[[nodiscard]] int listenAt(const std::string& path);

/// What comes over a connection, up to the end of what its other side sends.
std::string receiveAll(int socket);

/// What was sent to a service, one frame a connection, and how vokctl ended.
struct Exchange {
    std::vector<std::string> frames;
    Ended ended;
};

/// Calls vokctl against a service that gives these answers, one a connection.
[[nodiscard]] Exchange exchange(std::vector<std::string> arguments,
                                const std::vector<std::string>& answers);

} // namespace root
