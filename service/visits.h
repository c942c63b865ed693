// SPDX-License-Identifier: MIT
//
// visits.h: how many connections the service takes, in all and from each user, so that one user
// cannot fill it.
#pragma once

#include <map>
#include <sys/types.h>

namespace service {

/// What a user's next connection may do.
enum class Welcome {
    kServed,
    kRefused, ///< it is told that the service has no room for it
    kClosed   ///< not even that: the user has as many again that are being told
};

class Visits {
  public:
    static constexpr unsigned kMost = 32;
    /// They count as one user: with a socket that lets everybody connect, one account may come as
    /// many (a range of user numbers of its own).
    static constexpr auto kStrangers = static_cast<uid_t>(-1);
    /// Web pages ask as root, or as the service's own user, for everybody who uses them.
    static constexpr unsigned kMostOfService = 1024;

    /// One more connection of a user. Each enter(), whatever it gives, is followed by one leave().
    [[nodiscard]] Welcome enter(uid_t user);
    void leave(uid_t user);

  private:
    std::map<uid_t, unsigned> connections_;
};

/// How many clients may be connected at a time: the rest of the process's descriptors is for the
/// service itself and for a request.
[[nodiscard]] int countMostClients();

} // namespace service
