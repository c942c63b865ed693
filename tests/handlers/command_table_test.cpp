// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "cmdsvc/serve.h"

namespace {

TEST(CommandTable, everyCommandIsServed)
{
    EXPECT_EQ(cmdsvc::handlerTable().size(), 29U);
    for (const cmdsvc::HandlerRow& row : cmdsvc::handlerTable()) {
        EXPECT_NE(row.serve, nullptr) << row.code;
    }
}

} // namespace
