// SPDX-License-Identifier: MIT
#include "page/variables.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace {

TEST(Variables, areThoseOfTheEnvironment)
{
    ::setenv("PAGE_TEST", "a=b", 1);
    ::setenv("PAGE_EMPTY", "", 1);
    const page::Variables variables = page::Variables::ofEnvironment();
    ::setenv("PAGE_TEST", "later", 1);
    EXPECT_EQ(variables["PAGE_TEST"], "a=b");
    EXPECT_EQ(variables["PAGE_EMPTY"], "");
    EXPECT_EQ(variables["PAGE_NONE"], "");
}

TEST(Variables, canBeSet)
{
    page::Variables variables;
    variables.set("A", "1");
    variables.set("A", "2");
    EXPECT_EQ(variables["A"], "2");
}

} // namespace
