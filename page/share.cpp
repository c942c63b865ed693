// SPDX-License-Identifier: MIT
//
// One share: what is published of it, and its past.
#include <algorithm>
#include <optional>
#include <string>

#include "page/backup_words.h"
#include "page/layout.h"
#include "page/pages.h"
#include "page/past.h"
#include "page/share_past.h"
#include "text/translation.h"
#include "view/judgement.h"
#include "view/wording.h"

namespace page {
namespace {

using text::tr;
using view::ShareRow;

// ---- What is published now ----------------------------------------------------------------------

Html pair(const char* label, const Html& value)
{
    return Html() << "<div><dt>" << Text{label} << "</dt><dd>" << value << "</dd></div>\n";
}

Html words(const std::string& value)
{
    return Html() << Text{value};
}

Html used(const ShareRow& share)
{
    return words(share.used ? view::formatSpace(*share.used) : tr("not known"));
}

Html partOfAll(const ShareRow& share, const view::PublishedStatus& status)
{
    if (!share.used) {
        return {};
    }
    return pair(tr("Part of all shares"),
                words(view::formatPart(share.used->kibibytes(), view::totalUsed(status.shares))));
}

Html publishedTime(const view::Situation& situation)
{
    const std::time_t published = situation.status.published;
    return words(text::fill(tr("{1}, {2}"), {view::formatElapsed(published, situation.now),
                                             view::formatTime(published)}));
}

Html statusCard(const ShareRow& share, const Visit& visit, const view::Situation& situation)
{
    return Html() << R"(<section class="card" aria-labelledby="status">
<h2 id="status">)" << Text{tr("Last status")}
                  << "</h2>\n<dl class=\"facts\">\n"
                  << pair(tr("Used"), used(share)) << partOfAll(share, situation.status)
                  << pair(tr("Last backup"),
                          backupWords(share, visit.settings, view::dayOf(situation.now)))
                  << pair(tr("Published"), publishedTime(situation)) << "</dl>\n</section>\n";
}

// ---- Shares that are not there ------------------------------------------------------------------

Html wayBack()
{
    return Html() << R"(<p class="buttons"><a class="button" href=")" << kProgramUrl << R"(">)"
                  << Text{tr("To the overview")} << "</a></p>\n";
}

Html whyUnknown(std::string_view name)
{
    if (const std::optional<std::string> newName = findNewName(name)) {
        return Html() << "<p>" << Text{tr("This share was renamed. Its name is now:")} << " "
                      << shareLink(*newName) << "</p>";
    }
    const char* words = tr("Neither the last status nor the history has a share of this name.");
    return Html() << "<p>" << Text{words} << "</p>";
}

Page makeUnknown(std::string_view name)
{
    Page page;
    page.status = kNotFound;
    page.title = tr("No such share");
    page.body << notice(Mood::kNeutral, whyUnknown(name)) << wayBack();
    return page;
}

} // namespace

Page makeShare(Visit& visit)
{
    const std::string name(visit.request.query.value("name"));
    const Period& period = readPeriod(visit.request.query.value("period"));
    const view::Situation situation = visit.script.run([] { return view::readSituation(); });
    const auto& shares = situation.status.shares;
    const auto share = std::ranges::find(shares, name, &ShareRow::name);
    const std::optional<SharePast> past =
        readSharePast(name, startOf(period, situation.now), situation.now);
    if (share == shares.end() && !past) {
        return makeUnknown(name);
    }
    Page page;
    page.title = name;
    if (share != shares.end()) {
        page.body << statusCard(*share, visit, situation);
    }
    page.body << pastCard(name, past, period, situation.now, visit.settings) << wayBack();
    return page;
}

} // namespace page
