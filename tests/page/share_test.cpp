// SPDX-License-Identifier: MIT
#include <ctime>
#include <gtest/gtest.h>
#include <string>

#include "page/pages.h"
#include "page/past.h"
#include "page/share_past.h"
#include "sharestatus/status_format.h"
#include "tests/page/pasts.h"
#include "tests/page/visits.h"
#include "view/wording.h"

namespace {

using page::Page;
using root::le16;

std::string pastOf(const std::string& name, const char* period = "month")
{
    const std::time_t now = std::time(nullptr);
    const page::Period& asked = page::readPeriod(period);
    return page::pastCard(name, page::readSharePast(name, page::startOf(asked, now), now), asked,
                          now, {})
        .text();
}

class Share : public pasts::Test {
  protected:
    static void SetUpTestSuite() { now = std::time(nullptr); }

    /// Two shares: one of 300 KB with a backup of long ago, and one that was not measured.
    static void publish()
    {
        const std::string payload = std::string(5, '\0') + le16(2) + std::string(3, '\0') +
                                    le16(300) + "K010220202A & B\n" + std::string(12, '\0') +
                                    "Unmeasured\n";
        root::writeFile(root::kStatusFile, sharestatus::encodeStatus(payload).text());
    }

    static Page make(std::string_view query)
    {
        page::Request request = visits::get();
        request.query = page::Form(query);
        return visits::makeFor(visits::administrator(), page::makeShare, request);
    }

    /// A page, and the card with the past that it has if it is made at the same moment.
    struct Moment {
        Page page;
        std::string past;
    };

    /// The clock goes on while they are made, and with it the plot now and then.
    static Moment makeWithPast(std::string_view query, const char* period = "month")
    {
        Moment moment;
        do {
            moment = {make(query), pastOf("A & B", period)};
        } while (make(query).body.text() != moment.page.body.text());
        return moment;
    }

    /// A history in which the share has been for ten days.
    static void rememberTwice()
    {
        pasts::remember(10, {pasts::share("A & B", 1)}, pasts::diskWith(1), now);
        pasts::remember(0, {pasts::share("A & B", 3)}, pasts::diskWith(1), now);
    }

    inline static std::time_t now;
};

const std::string kWayBack = "<p class=\"buttons\"><a class=\"button\" "
                             "href=\"/cgi-bin/vokpage\">To the overview</a></p>\n";

/// The card with the last status, up to the time.
const std::string kStatus =
    R"(<section class="card" aria-labelledby="status">
<h2 id="status">Last status</h2>
<dl class="facts">
<div><dt>Used</dt><dd>300 KB</dd></div>
<div><dt>Part of all shares</dt><dd>100 %</dd></div>
<div><dt>Last backup</dt><dd><span class="badge ageing"><span aria-hidden="true">!</span> Old</span> <time datetime="2020-01-02">)" +
    view::formatAge(std::chrono::year(2020) / 1 / 2, view::dayOf(std::time(nullptr))) +
    R"(</time> <span class="quiet">2 January 2020, state 2</span></dd></div>
<div><dt>Published</dt><dd>just now, )";
const std::string kStatusEnd = "</dd></div>\n</dl>\n</section>\n";

/// Without the time of the status.
std::string withoutTime(std::string text)
{
    const std::string mark = "just now, ";
    const std::size_t start = text.find(mark);
    if (start != text.npos) {
        text.erase(start + mark.size(), text.find("</dd>", start) - start - mark.size());
    }
    return text;
}

TEST_F(Share, showsWhatIsPublishedAndThePast)
{
    publish();
    rememberTwice();
    const auto [page, past] = makeWithPast("name=A%20%26%20B");
    EXPECT_EQ(page.title, "A & B");
    EXPECT_EQ(page.status, 200);
    EXPECT_EQ(withoutTime(page.body.text()), kStatus + kStatusEnd + past + kWayBack);
    EXPECT_TRUE(visits::contains(page.body.text(), "+2.0 MB in 10 days"));
}

TEST_F(Share, showsThePeriodThatTheAddressNames)
{
    publish();
    rememberTwice();
    const auto [page, past] = makeWithPast("period=year&name=A+%26+B", "year");
    EXPECT_EQ(withoutTime(page.body.text()), kStatus + kStatusEnd + past + kWayBack);
}

TEST_F(Share, needsNoHistory)
{
    publish();
    const std::string none = R"(<section class="card" aria-labelledby="history">
<div class="head"><h2 id="history">History</h2>
</div>
<p>There is no history of this share yet.</p>
</section>
)";
    EXPECT_EQ(withoutTime(make("name=A%20%26%20B").body.text()),
              kStatus + kStatusEnd + none + kWayBack);
    EXPECT_EQ(withoutTime(make("name=Unmeasured").body.text()),
              R"(<section class="card" aria-labelledby="status">
<h2 id="status">Last status</h2>
<dl class="facts">
<div><dt>Used</dt><dd>not known</dd></div>
<div><dt>Last backup</dt><dd><span class="badge none"><span aria-hidden="true">&ndash;</span> Never</span></dd></div>
<div><dt>Published</dt><dd>just now, )" +
                  kStatusEnd + none + kWayBack);
}

TEST_F(Share, thatIsGoneStillHasItsPast)
{
    rememberTwice();
    const auto [page, past] = makeWithPast("name=A%20%26%20B");
    EXPECT_EQ(page.status, 200);
    EXPECT_EQ(page.title, "A & B");
    EXPECT_EQ(page.body.text(), past + kWayBack);
}

TEST_F(Share, thatNobodyKnowsIsNotFound)
{
    publish();
    rememberTwice();
    for (const char* query : {"", "name=", "name=a+%26+b", "name=A+%26+B%00", "name=%3Cx%3E"}) {
        const Page page = make(query);
        EXPECT_EQ(page.status, 404) << query;
        EXPECT_EQ(page.title, "No such share") << query;
        EXPECT_EQ(page.body.text(),
                  "<div class=\"notice\"><p>Neither the last status nor the history has a share of "
                  "this name.</p></div>\n" +
                      kWayBack)
            << query;
    }
}

TEST_F(Share, thatWasRenamedLeadsToItsNewName)
{
    history::ShareEntry renamed = pasts::share("Pictures", 1);
    renamed.folder = history::Folder{7, 7};
    pasts::remember(3, {renamed}, pasts::diskWith(1), now);
    renamed.name = "Photos & more";
    pasts::remember(2, {renamed}, pasts::diskWith(1), now);
    const Page page = make("name=Pictures");
    EXPECT_EQ(page.status, 404);
    EXPECT_EQ(page.body.text(),
              "<div class=\"notice\"><p>This share was renamed. Its name is now: <a "
              "href=\"/cgi-bin/vokpage/share?name=Photos%20%26%20more\"><bdi>Photos &amp; "
              "more</bdi></a></p></div>\n" +
                  kWayBack);
}

} // namespace
