// SPDX-License-Identifier: MIT
#include "page/overview_shares.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "view/wording.h"

namespace {

using page::readOrder;
using std::chrono::days;
using view::BackupReport;
using view::ShareRow;
using view::Situation;
using view::Space;
using Strings = std::vector<std::string>;

constexpr std::time_t kNow = 1795253583; // 2026-11-21
const std::chrono::sys_days kToday = view::dayOf(kNow);

config::Configuration configuration()
{
    config::Configuration all;
    all.goodStates = "1";
    all.failedStates = "2";
    all.words[2] = "disk <full>";
    return all;
}

ShareRow share(const std::string& name, std::optional<Space> used,
               BackupReport report = BackupReport::kNone)
{
    return {.name = name, .used = used, .backupState = {}, .backupDay = {}, .report = report};
}

ShareRow backedUp(const std::string& name, int age, std::optional<int> state)
{
    ShareRow row = share(name, Space{1, 'K'}, BackupReport::kRead);
    row.backupDay = kToday - days(age);
    row.backupState = state;
    return row;
}

std::string table(const std::vector<ShareRow>& shares, const char* sort = "")
{
    Situation situation;
    situation.status.shares = shares;
    situation.now = kNow;
    return page::shareTable(situation, configuration(), readOrder(sort)).text();
}

/// What follows each mark, up to another one.
Strings between(const std::string& text, const std::string& start, const std::string& end)
{
    Strings found;
    for (std::size_t from = text.find(start); from != std::string::npos;
         from = text.find(start, from)) {
        from += start.size();
        found.push_back(text.substr(from, text.find(end, from) - from));
    }
    return found;
}

// ---- Whole ------------------------------------------------------------------------------------

const std::string kHead =
    R"(<table role="table" class="shares" aria-labelledby="shares">
<thead role="rowgroup"><tr role="row">
<th role="columnheader" scope="col" class="name"><a id="sort-name" href="/cgi-bin/vokpage?sort=name#shares">Share</a></th>
<th role="columnheader" scope="col" class="number" aria-sort="descending"><a id="sort-number" href="/cgi-bin/vokpage?sort=size-up#shares">Used <span aria-hidden="true">&#9662;</span></a></th>
<th role="columnheader" scope="col" class="part">Part of all</th>
<th role="columnheader" scope="col" class="backup"><a id="sort-backup" href="/cgi-bin/vokpage?sort=backup#shares">Last backup</a></th>
</tr></thead>
<tbody role="rowgroup">)";

TEST(ShareTable, showsNameSpaceAndBackup)
{
    ShareRow known = backedUp("<b>", 3, 2);
    known.used = Space{604, 'M'};
    EXPECT_EQ(table({share("Media", std::nullopt), known}), kHead + R"(
<tr role="row"><th role="rowheader" scope="row" class="name"><bdi>&lt;b&gt;</bdi></th><td role="cell" class="number">604 MB</td><td role="cell" class="part"><svg class="bar" viewBox="0 0 1000 10" preserveAspectRatio="none" aria-hidden="true"><rect width="1000" height="10"/></svg><span class="quiet">100 %</span></td><td role="cell" class="backup"><span class="badge old"><span aria-hidden="true">&#10005;</span> Failed</span> <time datetime="2026-11-18">3 days ago</time> <span class="quiet">18 November 2026, state 2 (disk &lt;full&gt;)</span></td></tr>
<tr role="row"><th role="rowheader" scope="row" class="name"><bdi>Media</bdi></th><td role="cell" class="number"><span aria-hidden="true">&ndash;</span><span class="sr">not known</span></td><td role="cell" class="part"><span aria-hidden="true">&ndash;</span><span class="sr">not known</span></td><td role="cell" class="backup"><span class="badge none"><span aria-hidden="true">&ndash;</span> Never</span></td></tr>
</tbody>
</table>
)");
}

TEST(ShareTable, barsShowThePartOfAllShares)
{
    const std::string text = table({share("a", Space{1, 'G'}), share("b", Space{1, 'K'}),
                                    share("c", Space{0, 'K'}), share("d", Space{250, 'M'})});
    EXPECT_EQ(between(text, "<rect width=\"", "\""), (Strings{"799", "199", "5", "0"}));
    EXPECT_EQ(between(text, "<span class=\"quiet\">", "<"),
              (Strings{"80 %", "20 %", "under 1 %", "0 %"}));
}

// ---- Backups ----------------------------------------------------------------------------------

std::string backupOf(const ShareRow& row)
{
    return between(table({row}), R"(<td role="cell" class="backup">)", "</td>").front();
}

std::string badge(const std::string& colour, const std::string& sign, const std::string& word)
{
    return "<span class=\"badge " + colour + "\"><span aria-hidden=\"true\">" + sign + "</span> " +
           word + "</span>";
}

TEST(ShareTable, backupWithoutADayIsItsReport)
{
    EXPECT_EQ(backupOf(share("a", {})), badge("none", "&ndash;", "Never"));
    EXPECT_EQ(backupOf(share("a", {}, BackupReport::kUnreadable)),
              badge("ageing", "!", "Unreadable report"));
    EXPECT_EQ(backupOf(share("a", {}, BackupReport::kNewer)), badge("none", "+", "Reported since"));
}

TEST(ShareTable, backupIsJudgedByTheConfiguration)
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

TEST(ShareTable, stateThatNobodyHasExplainedIsItsNumberAlone)
{
    EXPECT_EQ(backupOf(backedUp("a", 0, 7)),
              "<span class=\"badge none\">State 7</span> <time datetime=\"2026-11-21\">today"
              "</time> <span class=\"quiet\">21 November 2026</span>");
    EXPECT_EQ(backupOf(backedUp("a", 0, std::nullopt)),
              " <time datetime=\"2026-11-21\">today</time> <span class=\"quiet\">21 November 2026"
              "</span>");
}

// ---- Orders -----------------------------------------------------------------------------------

std::string namesOf(const char* sort)
{
    ShareRow never = share("b", Space{7, 'K'});
    ShareRow old = backedUp("C", 9, 1);
    old.used = Space{2, 'M'};
    const std::string text =
        table({old, never, share("d", std::nullopt), backedUp("a", 1, 1)}, sort);
    std::string names;
    for (const std::string& name : between(text, "<bdi>", "<")) {
        names += name;
    }
    return names;
}

TEST(ShareOrder, isByAnyColumnInBothDirections)
{
    EXPECT_EQ(namesOf("size"), "Cbad");
    EXPECT_EQ(namesOf("size-up"), "abCd") << "what is not known comes last";
    EXPECT_EQ(namesOf("name"), "abCd");
    EXPECT_EQ(namesOf("name-down"), "dCba");
    EXPECT_EQ(namesOf("backup"), "bdCa");
    EXPECT_EQ(namesOf("backup-down"), "aCbd");
}

TEST(ShareOrder, isBySizeUnlessOneIsKnown)
{
    for (const char* sort : {"", "x", "size\n", "SIZE"}) {
        EXPECT_EQ(readOrder(sort).key, "size") << sort;
    }
}

/// The heads of the columns: how each is sorted, and where it leads.
Strings headsOf(const char* sort)
{
    const std::string text = table({}, sort);
    Strings heads = between(text, "aria-sort=\"", "\"");
    for (const std::string& link : between(text, "href=\"/cgi-bin/vokpage", "#shares\"")) {
        heads.push_back(link);
    }
    for (const std::string& sign : between(text, "<span aria-hidden=\"true\">", "<")) {
        heads.push_back(sign);
    }
    return heads;
}

TEST(ShareOrder, headsTurnTheCurrentOrderRound)
{
    EXPECT_EQ(headsOf("size-up"),
              (Strings{"ascending", "?sort=name", "", "?sort=backup", "&#9652;"}));
    EXPECT_EQ(headsOf("name"),
              (Strings{"ascending", "?sort=name-down", "", "?sort=backup", "&#9652;"}));
    EXPECT_EQ(headsOf("name-down"),
              (Strings{"descending", "?sort=name", "", "?sort=backup", "&#9662;"}));
    EXPECT_EQ(headsOf("backup"),
              (Strings{"ascending", "?sort=name", "", "?sort=backup-down", "&#9652;"}));
    EXPECT_EQ(headsOf("backup-down"),
              (Strings{"descending", "?sort=name", "", "?sort=backup", "&#9662;"}));
}

} // namespace
