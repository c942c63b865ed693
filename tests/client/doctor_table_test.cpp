// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <set>
#include <string>

#include "client/commands.h"
#include "client/doctor.h"

namespace {

TEST(DoctorTable, checksAreUniqueAndComeAfterThoseThatTheyDependOn)
{
    std::set<std::string> seen;
    for (const client::Check& check : client::checks()) {
        EXPECT_TRUE(check.after == nullptr || seen.contains(check.after)) << check.name;
        EXPECT_TRUE(seen.insert(check.name).second) << check.name;
        EXPECT_NE(check.examine, nullptr) << check.name;
    }
    EXPECT_EQ(seen.size(), 46U);
}

/// A command line would take it for the command.
TEST(DoctorTable, noCheckHasTheNameOfACommand)
{
    for (const client::Check& check : client::checks()) {
        for (const client::Subcommand& command : client::kSubcommands) {
            EXPECT_STRNE(check.name, command.name);
        }
    }
}

} // namespace
