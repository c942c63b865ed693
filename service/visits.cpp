// SPDX-License-Identifier: MIT
#include "service/visits.h"

#include <unistd.h>

namespace service {

Welcome Visits::enter(uid_t user)
{
    const unsigned most = (user == 0 || user == ::geteuid()) ? kMostOfService : kMost;
    const unsigned count = ++connections_[user];
    if (count <= most) {
        return Welcome::kServed;
    }
    return (count <= 2 * most) ? Welcome::kRefused : Welcome::kClosed;
}

void Visits::leave(uid_t user)
{
    const auto found = connections_.find(user);
    if (--found->second == 0) {
        connections_.erase(found);
    }
}

} // namespace service
