// SPDX-License-Identifier: MIT
#include "page/clock.h"

#include <ctime>
#include <gtest/gtest.h>

namespace {

TEST(Clock, countsFromTheStartOfTheAppliance)
{
    timespec before = {};
    ::clock_gettime(CLOCK_BOOTTIME, &before);
    const page::Time now = page::now();
    EXPECT_GE(now.count(), before.tv_sec);
    EXPECT_LE(now.count(), before.tv_sec + 5);
}

} // namespace
