// SPDX-License-Identifier: MIT
//
// lists.h: the shares and the users of the appliance, as the service lists them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "client/connection.h"

namespace client {

/// The properties that the share script knows; a list may have others.
inline constexpr const char* kPublicProperty = "public";
inline constexpr const char* kPrivateProperty = "private";

/// Name and property as the appliance writes them: any bytes without a newline.
struct Share {
    std::string name;
    std::string property;
};

struct ShareList {
    std::vector<Share> shares;  ///< in the appliance's order, external ones too
    std::uint32_t internal = 0; ///< how many of them are on the appliance's own disks
};

/// Asks for all shares ("lsts").
/// @throws Failure
[[nodiscard]] ShareList fetchShares(const Connection& connection);

/// Asks for the name of the public share ("gps1"); it is empty if the appliance has none.
/// @throws Failure
[[nodiscard]] std::string fetchPublicName(const Connection& connection);

/// Asks for the names of all users ("lstu").
/// @throws Failure
[[nodiscard]] std::vector<std::string> fetchUsers(const Connection& connection);

} // namespace client
