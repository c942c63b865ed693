// SPDX-License-Identifier: MIT
#include "page/overview_shares.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "core/bytes.h"
#include "page/layout.h"
#include "view/wording.h"

namespace page {
namespace {

using config::Configuration;
using view::Backup;
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
        std::ranges::stable_partition(shares,
                                      [](const ShareRow& share) { return share.used.has_value(); });
    } else if (order.column == Column::kBackup) {
        sortBy(shares, order.isDescending, dayOf);
    }
    return shares;
}

// ---- Cells ------------------------------------------------------------------------------------

Html unknown()
{
    return Html() << R"(<span aria-hidden="true">&ndash;</span><span class="sr">not known</span>)";
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

/// The digit without a sign: nobody has said whether it is good.
Html unexplained(const ShareRow& share, const Configuration& configuration)
{
    if (!share.backupState) {
        return {};
    }
    return Html() << R"(<span class="badge none">State )"
                  << Text{view::formatState(*share.backupState, configuration)} << "</span>";
}

Html backupBadge(Backup backup, const ShareRow& share, const Configuration& configuration)
{
    switch (backup) {
    case Backup::kNone:
        return badge("none", "&ndash;", "Never");
    case Backup::kUnreadable:
        return badge("ageing", "!", "Unreadable report");
    case Backup::kNewer:
        return badge("none", "+", "Reported since");
    case Backup::kFailed:
        return badge("old", "&#10005;", "Failed");
    case Backup::kInFuture:
        return badge("ageing", "!", "In the future");
    case Backup::kOld:
        return badge("ageing", "!", "Old");
    case Backup::kUnexplained:
        return unexplained(share, configuration);
    case Backup::kGood:
        break;
    }
    return badge("recent", "&#10003;", "Recent");
}

Html backupDay(std::chrono::sys_days day, std::chrono::sys_days today)
{
    return Html() << R"( <time datetime=")" << Text{view::formatIsoDate(day)} << R"(">)"
                  << Text{view::formatAge(day, today)} << "</time> "
                  << R"(<span class="quiet">)" << Text{view::formatDate(day)};
}

Html backupCell(const ShareRow& share, const Configuration& configuration,
                std::chrono::sys_days today)
{
    const Backup backup = view::judgeBackup(share, configuration, today);
    Html out;
    out << R"(<td role="cell" class="backup">)" << backupBadge(backup, share, configuration);
    if (share.backupDay) {
        out << backupDay(*share.backupDay, today);
        if (share.backupState && backup != Backup::kUnexplained) {
            out << ", state " << Text{view::formatState(*share.backupState, configuration)};
        }
        out << "</span>";
    }
    out << "</td>";
    return out;
}

// ---- Table ------------------------------------------------------------------------------------

/// The head of a column, which sorts by it. The sign says how it is sorted now.
Html columnHead(Literal id, Literal label, Column column, const ShareOrder& order)
{
    const bool isCurrent = column == order.column;
    Html out;
    out << R"(<th role="columnheader" scope="col" class=")" << id << R"(")";
    if (isCurrent) {
        out << R"( aria-sort=")"
            << (order.isDescending ? Literal("descending") : Literal("ascending")) << R"(")";
    }
    out << R"(><a id="sort-)" << id << R"(" href=")" << kProgramUrl
        << Text{orderAfter(order, column).query} << R"(#shares">)" << label;
    if (isCurrent) {
        out << R"( <span aria-hidden="true">)"
            << (order.isDescending ? Literal("&#9662;") : Literal("&#9652;")) << "</span>";
    }
    out << "</a></th>\n";
    return out;
}

Html tableHead(const ShareOrder& order)
{
    return Html() << R"(<thead role="rowgroup"><tr role="row">
)" << columnHead("name", "Share", Column::kName, order)
                  << columnHead("number", "Used", Column::kUsed, order)
                  << R"(<th role="columnheader" scope="col" class="part">Part of all</th>
)" << columnHead("backup", "Last backup", Column::kBackup, order)
                  << "</tr></thead>\n";
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
                const ShareOrder& order)
{
    const std::vector<ShareRow>& shares = situation.status.shares;
    const std::uint64_t total = view::totalUsed(shares);
    Html out;
    out << R"(<table role="table" class="shares" aria-labelledby="shares">
)" << tableHead(order)
        << R"(<tbody role="rowgroup">)";
    for (const ShareRow& share : sorted(shares, order)) {
        out << R"(
<tr role="row"><th role="rowheader" scope="row" class="name"><bdi>)"
            << Text{share.name} << "</bdi></th>" << spaceCells(share, total)
            << backupCell(share, configuration, view::dayOf(situation.now)) << "</tr>";
    }
    out << "\n</tbody>\n</table>\n";
    return out;
}

} // namespace page
