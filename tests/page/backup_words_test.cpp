// SPDX-License-Identifier: MIT
#include "page/backup_words.h"

#include <gtest/gtest.h>
#include <string>

#include "tests/page/share_rows.h"

namespace {

using sharerows::backedUp;
using sharerows::configuration;
using sharerows::kToday;
using sharerows::share;
using view::BackupReport;
using view::ShareRow;

// ---- Backups ----------------------------------------------------------------------------------

std::string backupOf(const ShareRow& row)
{
    return page::backupWords(row, configuration(), kToday).text();
}

std::string badge(const std::string& colour, const std::string& sign, const std::string& word)
{
    return "<span class=\"badge " + colour + "\"><span aria-hidden=\"true\">" + sign + "</span> " +
           word + "</span>";
}

TEST(BackupWords, backupWithoutADayIsItsReport)
{
    EXPECT_EQ(backupOf(share("a", {})), badge("none", "&ndash;", "Never"));
    EXPECT_EQ(backupOf(share("a", {}, BackupReport::kUnreadable)),
              badge("ageing", "!", "Unreadable report"));
    EXPECT_EQ(backupOf(share("a", {}, BackupReport::kNewer)), badge("none", "+", "Newer report"));
}

TEST(BackupWords, backupIsJudgedByTheConfiguration)
{
    EXPECT_EQ(backupOf(backedUp("a", 1, 1)),
              badge("recent", "&#10003;", "Recent") +
                  " <time datetime=\"2026-11-20\">yesterday</time> <span class=\"quiet\">20 "
                  "November 2026, state 1</span>");
    EXPECT_EQ(backupOf(backedUp("a", 8, 1)),
              badge("ageing", "!", "Old") +
                  " <time datetime=\"2026-11-13\">8 days ago</time> <span class=\"quiet\">13 "
                  "November 2026, state 1</span>");
    EXPECT_EQ(backupOf(backedUp("a", -2, std::nullopt)),
              badge("ageing", "!", "In the future") +
                  " <time datetime=\"2026-11-23\">in the future</time> <span class=\"quiet\">23 "
                  "November 2026</span>");
}

TEST(BackupWords, stateThatNobodyHasExplainedIsItsNumberAlone)
{
    EXPECT_EQ(backupOf(backedUp("a", 0, 7)),
              "<span class=\"badge none\">State 7</span> <time datetime=\"2026-11-21\">today"
              "</time> <span class=\"quiet\">21 November 2026</span>");
    EXPECT_EQ(backupOf(backedUp("a", 0, std::nullopt)),
              " <time datetime=\"2026-11-21\">today</time> <span class=\"quiet\">21 November 2026"
              "</span>");
}

} // namespace
