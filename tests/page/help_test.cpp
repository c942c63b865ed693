// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <string>

#include "tests/page/visits.h"

namespace {

using visits::contains;

TEST(Help, saysWhatMessagesMeanAndWhatToDo)
{
    const visits::Made made = visits::make(page::makeHelp, visits::get(), visits::nobody());
    EXPECT_EQ(made.title, "Troubleshooting");
    EXPECT_TRUE(contains(
        made.body, "<div><dt>There were wrong passwords. Wait \u2026 s, then try again.</dt>\n"
                   "<dd>After each wrong password the wait is twice as long, at most 64 s.</dd>\n"
                   "<dd>Wait, then type name and password with care.</dd></div>\n"));
    EXPECT_TRUE(contains(made.body, "&quot;vokctl doctor&quot; checks the whole appliance.</p>\n"));
}

} // namespace
