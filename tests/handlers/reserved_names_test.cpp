// SPDX-License-Identifier: MIT
#include "handlers/reserved_names.h"

#include <gtest/gtest.h>
#include <string>

#include "tests/support/creation.h"

namespace {

using creation::kSizes;
using root::kReserved;
using root::upper;

TEST(IsNameAllowed, reservedNamesAreRefusedInBothCases)
{
    for (const std::string& name : kReserved) {
        EXPECT_EQ(isNameAllowed(name.c_str()), 0) << name;
        EXPECT_EQ(isNameAllowed(upper(name).c_str()), 0) << name;
    }
    EXPECT_EQ(isNameAllowed("Lost+Found"), 0);
    EXPECT_EQ(isNameAllowed("cONFIg"), 0);
    EXPECT_EQ(isNameAllowed("__mt-Daapd"), 0);
}

TEST(IsNameAllowed, anyOtherNameIsFree)
{
    for (const std::string name :
         {"...", "confi", "config2", " config", "config ", "lost found", "lost+foun", "mediabolic",
          "_mediabolic", "__", "guest", "Media", "./", "config\n", "c\xC3\xB6nfig"}) {
        EXPECT_EQ(isNameAllowed(name.c_str()), 1) << name;
    }
    for (const std::string& name : kReserved) {
        EXPECT_EQ(isNameAllowed((name + "x").c_str()), 1) << name;
        EXPECT_EQ(isNameAllowed(("x" + name).c_str()), 1) << name;
    }
}

TEST(IsNameAllowed, emptyNameIsNotReserved)
{
    EXPECT_EQ(isNameAllowed(""), 1);
}

TEST(IsNameAllowed, namesOfAnySizeAreCompared)
{
    for (const std::size_t size : kSizes) {
        EXPECT_EQ(isNameAllowed(std::string(size, 'n').c_str()), 1) << size;
    }
    EXPECT_EQ(isNameAllowed(std::string(4000, '.').c_str()), 1);
}

} // namespace
