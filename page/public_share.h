// SPDX-License-Identifier: MIT
//
// public_share.h: the public share that the setup promises.
#pragma once

#include <string>

#include "client/connection.h"

namespace page {

struct PublicShare {
    enum class State {
        kNew,     ///< there is no share of this name yet
        kThere,   ///< there was such a share, and it is public
        kCreated, ///< there is one now
        kBadName, ///< the name has to be another one; the words say why
        kFailed,  ///< it is not known whether there is one; the words say why
    };

    State state = State::kNew;
    std::string name;       ///< as the appliance writes it, if there is such a share
    std::string words = {}; ///< sentences for the visitor
};

/// Asks the service ("lsts") whether there is such a share. Upper and lower case make no difference
/// to the appliance.
[[nodiscard]] PublicShare findPublicShare(const client::Connection& connection,
                                          const std::string& name);

/// Has the service create it ("pshr"), unless there is one.
[[nodiscard]] PublicShare providePublicShare(const client::Connection& connection,
                                             const std::string& name);

} // namespace page
