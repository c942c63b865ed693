// SPDX-License-Identifier: MIT
//
// visits.h: limits the connections of all clients together, and of each user, so that one user
// cannot take all of them.
#pragma once

#include <map>
#include <sys/types.h>

namespace service {

/// How the service treats a new connection.
enum class Welcome {
    kServed,
    kRefused, ///< the user has too many; the client gets a status that says so
    kClosed   ///< the user has twice as many; the connection is closed without a status
};

class Visits {
  public:
    static constexpr unsigned kMost = 32;
    /// All strangers count as one user, because one account may use many user numbers (a range of
    /// subordinate ones), and every account can connect if there is a group of viewers.
    static constexpr auto kStrangers = static_cast<uid_t>(-1);
    /// For root and the service's own user: the web pages of all people are clients as one of
    /// these.
    static constexpr unsigned kMostOfService = 1024;

    /// Counts a new connection of a user. Each enter() is followed by one leave(), whatever it
    /// returns.
    [[nodiscard]] Welcome enter(uid_t user);
    void leave(uid_t user);

  private:
    std::map<uid_t, unsigned> connections_;
};

/// How many clients may be connected at a time. The other descriptors of the process are for the
/// service itself and for a request.
[[nodiscard]] int countMostClients();

} // namespace service
