// SPDX-License-Identifier: MIT
#include "service/visits.h"

#include <algorithm>
#include <sys/resource.h>
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

int countMostClients()
{
    constexpr rlim_t kReserve = 32;
    constexpr rlim_t kPlenty = 100'000;
    rlimit limit = {};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    return static_cast<int>(std::min(limit.rlim_cur, kPlenty + kReserve) -
                            std::min(limit.rlim_cur - 1, kReserve));
}

} // namespace service
