// SPDX-License-Identifier: MIT
#include "cmdsvc/command_table.h"

#include <gtest/gtest.h>

namespace {

TEST(CommandTable, twentyNineCommandsAreKnown)
{
    EXPECT_EQ(cmdsvc::commandTable().size(), 29U);
}

TEST(CommandTable, everyCommandIsServed)
{
    for (const cmdsvc::CommandRow& row : cmdsvc::commandTable()) {
        EXPECT_NE(row.handler, nullptr) << row.code;
    }
}

TEST(CommandTable, countRules)
{
    for (int count = 0; count < 256; ++count) {
        const auto byte = static_cast<std::uint8_t>(count);
        EXPECT_TRUE(cmdsvc::kAnyCount.accepts(byte));
        EXPECT_EQ(cmdsvc::exactly(3).accepts(byte), count == 3);
        EXPECT_EQ(cmdsvc::between(1, 2).accepts(byte), count == 1 || count == 2);
    }
}

} // namespace
