// SPDX-License-Identifier: MIT
#include "service/visits.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace {

using service::Visits;
using service::Welcome;

/// How many connections of a user are served, refused and closed, of so many.
std::vector<unsigned> enter(Visits& visits, uid_t user, unsigned times)
{
    std::vector<unsigned> counts(3);
    for (unsigned i = 0; i < times; ++i) {
        ++counts[static_cast<std::size_t>(visits.enter(user))];
    }
    return counts;
}

TEST(Visits, userIsServedRefusedAndClosed)
{
    Visits visits;
    EXPECT_EQ(enter(visits, 1000, 100), (std::vector<unsigned>{32, 32, 36}));
    EXPECT_EQ(enter(visits, 1001, 100), (std::vector<unsigned>{32, 32, 36})) << "each for itself";
}

TEST(Visits, rootAndTheServicesUserHaveMore)
{
    Visits visits;
    const std::vector<unsigned> counts{1024, 1024, 52};
    EXPECT_EQ(enter(visits, 0, 2100), counts);
    if (::geteuid() != 0) {
        EXPECT_EQ(enter(visits, ::geteuid(), 2100), counts);
    }
}

TEST(Visits, whoLeavesMakesRoom)
{
    Visits visits;
    enter(visits, 1000, 32);
    visits.leave(1000);
    EXPECT_EQ(enter(visits, 1000, 2), (std::vector<unsigned>{1, 1, 0}));
    for (int i = 0; i < 33; ++i) {
        visits.leave(1000);
    }
    EXPECT_EQ(enter(visits, 1000, 33), (std::vector<unsigned>{32, 1, 0}));
}

TEST(Visits, clientsLeaveThirtyTwoDescriptors)
{
    rlimit former = {};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &former), 0);
    const auto count = [&](rlim_t limit) {
        const rlimit changed = {limit, former.rlim_max};
        EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &changed), 0);
        return service::countMostClients();
    };
    EXPECT_EQ(count(100), 68);
    EXPECT_EQ(count(33), 1);
    EXPECT_EQ(count(20), 1) << "fewer than are kept: one client is heard all the same";
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &former), 0);
}

} // namespace
