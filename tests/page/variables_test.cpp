// SPDX-License-Identifier: MIT
#include "page/variables.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
#include <vector>

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

TEST(Variables, fewStayInTheEnvironment)
{
    ::setenv("HTTP_EVIL", "() { :; }", 1);
    ::setenv("LD_LIBRARY_PATH", "/tmp", 1);
    ::setenv("TZ", "UTC", 1);
    page::cleanEnvironment();
    std::vector<std::string> entries;
    for (char** entry = ::environ; *entry != nullptr; ++entry) {
        entries.emplace_back(*entry);
    }
    EXPECT_EQ(entries, (std::vector<std::string>{
                           "PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin",
                           "HOME=/", "LC_ALL=C", "TZ=UTC"}));
}

} // namespace
