// SPDX-License-Identifier: MIT
#include <algorithm>
#include <gtest/gtest.h>
#include <iterator>

#include "core/core.h"

namespace {

TEST(Scratch, requestBufferHoldsFourThousandNinetySixZeros)
{
    static_assert(sizeof fin_buf == 4096);
    EXPECT_TRUE(std::ranges::all_of(fin_buf, [](char c) { return c == '\0'; }));
}

TEST(Scratch, withoutARequestThereIsNoAnswer)
{
    EXPECT_EQ(fout_buf, nullptr);
}

} // namespace
