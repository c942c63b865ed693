// SPDX-License-Identifier: MIT
#include "page/overview_shares.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "page/course.h"
#include "tests/page/share_rows.h"
#include "view/wording.h"

namespace {

using page::readOrder;
using sharerows::backedUp;
using sharerows::configuration;
using sharerows::kNow;
using sharerows::share;
using view::BackupReport;
using view::ShareRow;
using view::Situation;
using view::Space;
using Strings = std::vector<std::string>;

std::string table(const std::vector<ShareRow>& shares, const char* sort = "",
                  const page::Past& past = {})
{
    Situation situation;
    situation.status.shares = shares;
    situation.now = kNow;
    return page::shareTable(situation, configuration(), readOrder(sort), past).text();
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
<tr role="row"><th role="rowheader" scope="row" class="name"><a href="/cgi-bin/vokpage/share?name=%3Cb%3E"><bdi>&lt;b&gt;</bdi></a></th><td role="cell" class="number">604 MB</td><td role="cell" class="part"><svg class="bar" viewBox="0 0 1000 10" preserveAspectRatio="none" aria-hidden="true"><rect width="1000" height="10"/></svg><span class="quiet">100 %</span></td><td role="cell" class="backup"><span class="badge old"><span aria-hidden="true">&#10005;</span> Failed</span> <time datetime="2026-11-18">3 days ago</time> <span class="quiet">18 November 2026, state 2 (disk &lt;full&gt;)</span></td></tr>
<tr role="row"><th role="rowheader" scope="row" class="name"><a href="/cgi-bin/vokpage/share?name=Media"><bdi>Media</bdi></a></th><td role="cell" class="number"><span aria-hidden="true">&ndash;</span><span class="sr">not known</span></td><td role="cell" class="part"><span aria-hidden="true">&ndash;</span><span class="sr">not known</span></td><td role="cell" class="backup"><span class="badge none"><span aria-hidden="true">&ndash;</span> Never</span></td></tr>
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

// ---- The past ---------------------------------------------------------------------------------

history::Point pointAt(int age, std::uint16_t used)
{
    return {.published = kNow - age * std::time_t{86400},
            .used = Space{used, 'M'},
            .backupState = {},
            .backupDay = {}};
}

page::Past past()
{
    page::Past past;
    past.courses["a"] = {pointAt(30, 10), pointAt(15, 30), pointAt(0, 20)};
    past.courses["gone"] = past.courses["a"];
    past.courses["one day"] = {pointAt(0, 20)};
    return past;
}

TEST(ShareTable, lastThirtyDaysAreAColumnIfAShareHasThem)
{
    const std::string text =
        table({share("a", Space{20, 'M'}), share("one day", Space{20, 'M'})}, "", past());
    EXPECT_EQ(between(text, "<th role=\"columnheader\" scope=\"col\" class=\"past\">", "</th>"),
              Strings{"Last 30 days"});
    EXPECT_EQ(between(text, "<td role=\"cell\" class=\"past\">", "</td>"),
              (Strings{page::courseOf(past().courses["a"], kNow).text(), ""}));
}

TEST(ShareTable, sharesThatAreGoneAreBelowIt)
{
    const std::string table20 = table({share("b", Space{20, 'M'})});
    page::Past past;
    past.courses["b"] = {pointAt(0, 20)};
    past.courses["Old <1>"] = {pointAt(8, 20)};
    past.courses["Old 2"] = {pointAt(30, 20)};
    past.courses["long gone"] = {pointAt(31, 20)};
    past.courses["renamed just now"] = {pointAt(0, 20)};
    EXPECT_EQ(table({share("b", Space{20, 'M'})}, "", past),
              table20 + "<p class=\"quiet\">Gone in the last 30 days: "
                        "<a href=\"/cgi-bin/vokpage/share?name=Old%202\"><bdi>Old 2</bdi></a>, "
                        "<a href=\"/cgi-bin/vokpage/share?name=Old%20%3C1%3E\"><bdi>Old "
                        "&lt;1&gt;</bdi></a></p>\n");
}

TEST(ShareTable, hasNoColumnForThePastIfNoShareHasOne)
{
    const std::vector<ShareRow> shares = {share("one day", Space{20, 'M'})};
    EXPECT_EQ(table(shares, "", past()), table(shares));
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
