// SPDX-License-Identifier: MIT
//
// accounts.h: the appliance's accounts, asked for through the service. What the service refuses or
// does not answer comes as a client::Failure with a sentence for people.
#pragma once

#include <optional>
#include <string>

#include "config/configuration.h"

namespace page {

/// A password and whom it is said to belong to, as somebody has typed them.
struct Credentials {
    std::string name;
    std::string password;
};

/// Has the service check a password ("wall").
/// @return the account's name as the appliance writes it, as the check does not tell upper from
/// lower
///         case; nothing if name or password are wrong, or if the appliance has two accounts whose
///         names differ in case alone
[[nodiscard]] std::optional<std::string> checkPassword(const config::Configuration& settings,
                                                       const Credentials& credentials);

/// Has the service create an account ("crat").
void createAccount(const config::Configuration& settings, const Credentials& credentials);

} // namespace page
