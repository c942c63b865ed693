// SPDX-License-Identifier: MIT
#include "page/overview_shares.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "core/bytes.h"
#include "page/backup_words.h"
#include "page/course.h"
#include "page/layout.h"
#include "text/translation.h"
#include "view/wording.h"

namespace page {
namespace {

using config::Configuration;
using text::tr;
using view::ShareRow;

// ---- Orders -----------------------------------------------------------------------------------

/// The first order of a column is the one that its head leads to from another column.
constexpr auto kOrders = std::to_array<ShareOrder>({
    {"size", "", Column::kUsed, true},
    {"size-up", "?sort=size-up", Column::kUsed, false},
    {"name", "?sort=name", Column::kName, false},
    {"name-down", "?sort=name-down", Column::kName, true},
    {"backup", "?sort=backup", Column::kBackup, false},
    {"backup-down", "?sort=backup-down", Column::kBackup, true},
});

/// The order that the head of a column leads to.
const ShareOrder& orderAfter(const ShareOrder& current, Column column)
{
    const bool isDescending = !current.isDescending;
    const auto* next = std::ranges::find_if(kOrders, [&](const ShareOrder& each) {
        return each.column == column &&
               (column != current.column || each.isDescending == isDescending);
    });
    return *next;
}

std::string foldedName(const ShareRow& share)
{
    std::string name = share.name;
    std::ranges::transform(name, name.begin(), core::toAsciiUpper);
    return name;
}

std::uint64_t sizeOf(const ShareRow& share)
{
    return share.used ? share.used->kibibytes() : 0;
}

/// Never is longer ago than any day.
std::chrono::sys_days dayOf(const ShareRow& share)
{
    return share.backupDay.value_or(std::chrono::sys_days::min());
}

template <class Key> void sortBy(std::vector<ShareRow>& shares, bool isDescending, Key key)
{
    if (isDescending) {
        std::ranges::stable_sort(shares, std::ranges::greater(), key);
    } else {
        std::ranges::stable_sort(shares, std::ranges::less(), key);
    }
}

/// Shares that are alike stay in the order of their names. Those of unknown size come last.
std::vector<ShareRow> sorted(std::vector<ShareRow> shares, const ShareOrder& order)
{
    sortBy(shares, order.column == Column::kName && order.isDescending, foldedName);
    if (order.column == Column::kUsed) {
        sortBy(shares, order.isDescending, sizeOf);
        std::stable_partition(shares.begin(), shares.end(),
                              [](const ShareRow& share) { return share.used.has_value(); });
    } else if (order.column == Column::kBackup) {
        sortBy(shares, order.isDescending, dayOf);
    }
    return shares;
}

// ---- Cells ------------------------------------------------------------------------------------

Html unknown()
{
    return Html() << R"(<span aria-hidden="true">&ndash;</span><span class="sr">)"
                  << Text{tr("not known")} << "</span>";
}

/// A bar beside a text that says the same.
Html bar(std::uint64_t part, std::uint64_t whole)
{
    constexpr std::uint64_t kSteps = 1000;
    // What is there at all can be seen.
    const std::uint64_t smallest = (part > 0) ? 5 : 0;
    const std::uint64_t steps = std::max((whole > 0) ? part * kSteps / whole : 0, smallest);
    return Html()
           << R"(<svg class="bar" viewBox="0 0 1000 10" preserveAspectRatio="none" aria-hidden="true">)"
           << R"(<rect width=")" << Text{std::to_string(steps)} << R"(" height="10"/></svg>)";
}

Html spaceCells(const ShareRow& share, std::uint64_t total)
{
    if (!share.used) {
        return Html() << R"(<td role="cell" class="number">)" << unknown()
                      << R"(</td><td role="cell" class="part">)" << unknown() << "</td>";
    }
    const std::uint64_t used = share.used->kibibytes();
    return Html() << R"(<td role="cell" class="number">)" << Text{view::formatSpace(*share.used)}
                  << R"(</td><td role="cell" class="part">)" << bar(used, total)
                  << R"(<span class="quiet">)" << Text{view::formatPart(used, total)}
                  << "</span></td>";
}

// ---- Table ------------------------------------------------------------------------------------

/// The head of a column, which sorts by it. The sign says how it is sorted now.
Html columnHead(Literal id, const char* label, Column column, const ShareOrder& order)
{
    const bool isCurrent = column == order.column;
    Html out;
    out << R"(<th role="columnheader" scope="col" class=")" << id << R"(")";
    if (isCurrent) {
        out << R"( aria-sort=")"
            << (order.isDescending ? Literal("descending") : Literal("ascending")) << R"(")";
    }
    out << R"(><a id="sort-)" << id << R"(" href=")" << kProgramUrl
        << Text{orderAfter(order, column).query} << R"(#shares">)" << Text{label};
    if (isCurrent) {
        out << R"( <span aria-hidden="true">)"
            << (order.isDescending ? Literal("&#9662;") : Literal("&#9652;")) << "</span>";
    }
    out << "</a></th>\n";
    return out;
}

Html plainHead(Literal id, const char* label)
{
    return Html() << R"(<th role="columnheader" scope="col" class=")" << id << R"(">)"
                  << Text{label} << "</th>\n";
}

/// Without a history there is no column for it.
Html tableHead(const ShareOrder& order, bool hasCourses)
{
    return Html() << R"(<thead role="rowgroup"><tr role="row">
)" << columnHead("name", tr("Share"), Column::kName, order)
                  << columnHead("number", tr("Used"), Column::kUsed, order)
                  << plainHead("part", tr("Part of all"))
                  << (hasCourses ? plainHead("past", tr("Last 30 days")) : Html())
                  << columnHead("backup", tr("Last backup"), Column::kBackup, order)
                  << "</tr></thead>\n";
}

Html nameCell(const ShareRow& share)
{
    return Html() << R"(<th role="rowheader" scope="row" class="name">)" << shareLink(share.name)
                  << "</th>";
}

/// A course for each share that has one, by its name.
using Courses = std::map<std::string_view, Html>;

Courses coursesOf(const view::Situation& situation, const Past& past)
{
    Courses courses;
    for (const ShareRow& share : situation.status.shares) {
        const auto found = past.courses.find(share.name);
        const Html course =
            (found != past.courses.end()) ? courseOf(found->second, situation.now) : Html();
        if (!course.text().empty()) {
            courses[share.name] = course;
        }
    }
    return courses;
}

Html courseCell(const Courses& courses, const ShareRow& share)
{
    if (courses.empty()) {
        return {};
    }
    const auto found = courses.find(share.name);
    return Html() << R"(<td role="cell" class="past">)"
                  << (found != courses.end() ? found->second : Html()) << "</td>";
}

/// Shares that an earlier status has had; a status that is not in the history yet does not count.
std::vector<std::string_view> findGone(const view::Situation& situation, const Past& past)
{
    const std::time_t start = daysBefore(situation.now, kCourseDays);
    std::time_t last = start;
    for (const auto& [name, points] : past.courses) {
        last = std::max(last, points.empty() ? 0 : points.back().published);
    }
    std::vector<std::string_view> gone;
    for (const auto& [name, points] : past.courses) {
        const bool isOld = !points.empty() && points.back().published < last;
        const bool isHere = std::ranges::find(situation.status.shares, name, &ShareRow::name) !=
                            situation.status.shares.end();
        if (isOld && !isHere && points.back().published >= start) {
            gone.emplace_back(name);
        }
    }
    return gone;
}

Html goneShares(const view::Situation& situation, const Past& past)
{
    Html links;
    for (const std::string_view name : findGone(situation, past)) {
        links << (links.text().empty() ? Literal(" ") : Literal(", ")) << shareLink(name);
    }
    if (links.text().empty()) {
        return {};
    }
    return Html() << R"(<p class="quiet">)" << Text{tr("Gone in the last 30 days:")} << links
                  << "</p>\n";
}

} // namespace

const ShareOrder& readOrder(std::string_view key)
{
    const auto* found = std::ranges::find(kOrders, key, &ShareOrder::key);
    return (found != kOrders.end()) ? *found : kOrders.front();
}

// The style sheet lays the table out anew in narrow windows; with the roles it stays a table for
// those who listen.
Html shareTable(const view::Situation& situation, const Configuration& configuration,
                const ShareOrder& order, const Past& past)
{
    const std::vector<ShareRow>& shares = situation.status.shares;
    const std::uint64_t total = view::totalUsed(shares);
    const Courses courses = coursesOf(situation, past);
    Html out;
    out << R"(<table role="table" class="shares" aria-labelledby="shares">
)" << tableHead(order, !courses.empty())
        << R"(<tbody role="rowgroup">)";
    for (const ShareRow& share : sorted(shares, order)) {
        out << R"(
<tr role="row">)"
            << nameCell(share) << spaceCells(share, total) << courseCell(courses, share)
            << R"(<td role="cell" class="backup">)"
            << backupWords(share, configuration, view::dayOf(situation.now)) << "</td></tr>";
    }
    return out << "\n</tbody>\n</table>\n" << goneShares(situation, past);
}

} // namespace page
