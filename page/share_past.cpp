// SPDX-License-Identifier: MIT
#include "page/share_past.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "history/trend.h"
#include "page/course.h"
#include "page/form.h"
#include "page/layout.h"
#include "page/plot.h"
#include "text/translation.h"
#include "view/judgement.h"
#include "view/wording.h"

namespace page {
namespace {

using history::Fate;
using history::Point;
using text::tr;
using Points = std::vector<Point>;

/// All of the history, however old it is.
constexpr std::chrono::days kAll{36500};

constexpr auto kPeriods = std::to_array<Period>({
    {"month", text::mark("30 days"), std::chrono::days(30)},
    {"year", text::mark("A year"), std::chrono::days(365)},
    {"all", text::mark("All"), kAll},
});

std::string formatDay(std::time_t time)
{
    return view::formatDate(view::dayOf(time));
}

Html paragraph(const std::string& words)
{
    return Html() << "<p>" << Text{words} << "</p>\n";
}

// ---- What is drawn ------------------------------------------------------------------------------

/// From when to when the plot reaches: all of the period, or all that there is.
struct Range {
    std::time_t first;
    std::time_t last;
};

Range rangeOf(const Period& period, const Points& points, std::time_t now)
{
    const std::time_t start = daysBefore(now, period.days);
    const bool isFromFirst = period.days == kAll && !points.empty();
    const std::time_t first = isFromFirst ? std::max(start, points.front().published) : start;
    return {std::min(first, daysBefore(now, std::chrono::days(1))), now};
}

/// The entries of the range in which the share was measured.
Points measured(const Points& points, const Range& range)
{
    Points all = points;
    std::erase_if(all, [&](const Point& point) {
        return !point.used || point.published < range.first || point.published > range.last;
    });
    return all;
}

std::uint64_t sizeOf(const Point& point)
{
    return point.used->kibibytes();
}

/// What is drawn and listed: the last entry of each of thirty equal parts of the range, since more
/// marks cannot be told apart, and what the words name: the first entry, the least and the most.
Points pick(const Points& points, const Range& range)
{
    constexpr std::int64_t kParts = 30;
    const std::int64_t length = std::int64_t{range.last - range.first} + 1;
    const auto partOf = [&](const Point& point) {
        return std::int64_t{point.published - range.first} * kParts / length;
    };
    const auto [least, most] = std::ranges::minmax_element(points, {}, sizeOf);
    Points picked;
    for (auto point = points.begin(); point != points.end(); ++point) {
        const auto next = point + 1;
        const bool isNamed = point == points.begin() || point == least || point == most;
        if (isNamed || next == points.end() || partOf(*next) != partOf(*point)) {
            picked.push_back(*point);
        }
    }
    return picked;
}

std::vector<PlotPoint> drawn(const Points& points)
{
    std::vector<PlotPoint> all;
    for (const Point& point : points) {
        all.push_back({point.published, sizeOf(point)});
    }
    return all;
}

/// The plot in words.
std::string summary(const Points& points)
{
    const auto [least, most] = std::ranges::minmax_element(points, {}, sizeOf);
    const std::string first = formatDay(points.front().published);
    const std::string last = formatDay(points.back().published);
    const std::string highest = view::formatSpace(*most->used);
    if (sizeOf(*least) == sizeOf(*most)) {
        return text::fill(tr("From {1} to {2} it used {3}."), {first, last, highest});
    }
    return text::fill(tr("From {1} to {2} it used at least {3} and at most {4}."),
                      {first, last, view::formatSpace(*least->used), highest});
}

// ---- What became of the share -------------------------------------------------------------------

Html fateOf(const SharePast& past, std::time_t since)
{
    Html out;
    switch (history::fateOf(past.share, past.extent, since)) {
    case Fate::kNew:
        out << paragraph(text::fill(tr("It is new: it was first published on {}."),
                                    {formatDay(past.share.first)}));
        break;
    case Fate::kVanished:
        out << paragraph(text::fill(tr("It is gone: it was last published on {}."),
                                    {formatDay(past.share.last)}));
        break;
    case Fate::kRenamed:
    case Fate::kKept:
        break;
    }
    for (const history::FormerName& former : past.share.formerNames) {
        out << paragraph(text::fill(tr("It was renamed: until {1} its name was {2}."),
                                    {formatDay(former.renamed), former.name}));
    }
    return out;
}

Html damage(const history::Extent& extent)
{
    if (!extent.begunAnew) {
        return {};
    }
    return paragraph(text::fill(tr("The history began anew on {}, because its file was damaged."),
                                {formatDay(*extent.begunAnew)}));
}

// ---- Markup -------------------------------------------------------------------------------------

Html periodLinks(std::string_view name, const Period& current)
{
    Html out;
    out << R"(<nav class="periods" aria-label=")" << Text{tr("Period")} << R"("><ul>)";
    for (const Period& period : kPeriods) {
        out << R"(<li><a href=")" << kProgramUrl << "/share?name=" << Text{encodeUrl(name)}
            << "&amp;period=" << Text{period.key} << R"(")"
            << (period.key == current.key ? Literal(R"( aria-current="page")") : Literal("")) << ">"
            << Text{tr(period.label)} << "</a></li>";
    }
    return out << "</ul></nav>\n";
}

Html backupCell(const Point& point, const config::Configuration& configuration)
{
    if (!point.backupDay) {
        return Html() << "<td>" << Text{tr("never")} << "</td>";
    }
    const std::string day = view::formatDate(*point.backupDay);
    if (!point.backupState) {
        return Html() << "<td>" << Text{day} << "</td>";
    }
    const std::string words = text::fill(
        tr("{1}, state {2}"), {day, view::formatState(*point.backupState, configuration)});
    return Html() << "<td>" << Text{words} << "</td>";
}

/// The newest first.
Html figures(const Points& points, const config::Configuration& configuration)
{
    Html out;
    out << "<details>\n<summary>" << Text{tr("The figures as a table")} << "</summary>\n"
        << R"(<table class="listing figures">
<thead><tr><th scope="col">)"
        << Text{tr("Published")} << R"(</th><th scope="col">)" << Text{tr("Used")}
        << R"(</th><th scope="col">)" << Text{tr("Last backup")} << "</th></tr></thead>\n<tbody>\n";
    for (const history::Point& point : Points(points.rbegin(), points.rend())) {
        out << R"(<tr><th scope="row">)" << Text{view::formatTime(point.published)} << "</th><td>"
            << Text{view::formatSpace(*point.used)} << "</td>" << backupCell(point, configuration)
            << "</tr>\n";
    }
    return out << "</tbody>\n</table>\n</details>\n";
}

/// The words are about all entries of the range, also about those that are not drawn.
Html picture(const Points& points, const Points& picked, const Range& range)
{
    return Html() << R"(<p id="plot">)" << Text{summary(points)} << "</p>\n"
                  << plot(drawn(picked), range.first, range.last, "plot");
}

/// What is gone no longer changes.
Html change(const SharePast& past, std::chrono::days days)
{
    const bool isGone = history::fateOf(past.share, past.extent, 0) == Fate::kVanished;
    const std::string words = isGone ? "" : wordChange(past.points, days);
    return words.empty() ? Html() : Html() << R"(<p class="change">)" << Text{words} << "</p>\n";
}

Html courseIn(const SharePast& past, const Period& period, std::time_t now,
              const config::Configuration& configuration)
{
    const Range range = rangeOf(period, past.points, now);
    const Points points = measured(past.points, range);
    if (points.empty()) {
        return paragraph(tr("Its size was not published in this time."));
    }
    const Points picked = pick(points, range);
    return Html() << change(past, period.days) << picture(points, picked, range)
                  << figures(picked, configuration);
}

} // namespace

const Period& readPeriod(std::string_view key)
{
    const auto* found = std::ranges::find(kPeriods, key, &Period::key);
    return (found != kPeriods.end()) ? *found : kPeriods.front();
}

// A change is measured from an entry that may be two days older than the period.
std::time_t startOf(const Period& period, std::time_t now)
{
    constexpr std::chrono::days kMore{2};
    return (period.days == kAll) ? 0 : daysBefore(now, period.days + kMore);
}

Html pastCard(std::string_view name, const std::optional<SharePast>& past, const Period& period,
              std::time_t now, const config::Configuration& configuration)
{
    Html out;
    out << R"(<section class="card" aria-labelledby="history">
<div class="head"><h2 id="history">)"
        << Text{tr("History")} << "</h2>\n";
    if (past) {
        out << periodLinks(name, period) << "</div>\n"
            << fateOf(*past, startOf(period, now)) << damage(past->extent)
            << courseIn(*past, period, now, configuration);
    } else {
        out << "</div>\n" << paragraph(tr("There is no history of this share yet."));
    }
    return out << "</section>\n";
}

} // namespace page
