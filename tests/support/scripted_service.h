// SPDX-License-Identifier: MIT
//
// scripted_service.h: a service whose answers the test chooses.
#pragma once

#include <string>
#include <vector>

#include "tests/support/root.h"

namespace root {

/// A listening socket at a path.
[[nodiscard]] int listenAt(const std::string& path);

/// All bytes from a connection, up to its end.
std::string receiveAll(int socket);

/// The frames that a service received, one per connection, and how vokctl ended.
struct Exchange {
    std::vector<std::string> frames;
    Ended ended;
};

/// Calls vokctl with a service that gives these answers, one per connection.
[[nodiscard]] Exchange exchange(std::vector<std::string> arguments,
                                const std::vector<std::string>& answers);

} // namespace root
