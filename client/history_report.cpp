// SPDX-License-Identifier: MIT
#include "client/history_report.h"

#include <algorithm>
#include <array>

#include "client/plot.h"
#include "client/text_table.h"
#include "history/trend.h"
#include "text/translation.h"
#include "view/terminal_text.h"

namespace client {
namespace {

using history::Extent;
using history::Fate;
using history::KnownShare;
using history::Reader;
using text::fill;
using text::tr;
using text::trc;
using text::trn;
using view::makePrintable;

constexpr const char* kNone = "-";

std::time_t startOf(const HistoryView& asked)
{
    constexpr std::time_t kDay = 86400;
    return asked.now - static_cast<std::time_t>(asked.days.count()) * kDay;
}

std::string formatDay(std::time_t time)
{
    return view::formatDate(view::dayOf(time));
}

// ---- What became of a share --------------------------------------------------------------------

std::string renderFate(const KnownShare& share, const Extent& extent, std::time_t since)
{
    switch (history::fateOf(share, extent, since)) {
    case Fate::kNew:
        return fill(tr("new since {}"), {formatDay(share.first)});
    case Fate::kVanished:
        return fill(tr("gone since {}"), {formatDay(share.last)});
    case Fate::kRenamed: {
        const history::FormerName& former = share.formerNames.back();
        return fill(tr("was {1} until {2}"), {former.name, formatDay(former.renamed)});
    }
    case Fate::kKept:
        break;
    }
    return "";
}

/// Of a share that has vanished there is something to say only for as long as is looked back.
bool isShown(const KnownShare& share, const Extent& extent, std::time_t since)
{
    return history::fateOf(share, extent, since) != Fate::kVanished || share.last >= since;
}

// ---- Table -------------------------------------------------------------------------------------

std::string formatUsed(const Reader& reader, const KnownShare& share, const Extent& extent)
{
    const bool isThere = !extent.lastList || share.last >= *extent.lastList;
    const auto last = reader.lastMeasured(share.name, share.last);
    return isThere && last ? std::to_string(last->used->value) + " " + last->used->unit : kNone;
}

TableRow makeRow(const Reader& reader, const KnownShare& share, const Extent& extent,
                 const HistoryView& asked)
{
    const auto change = history::changeOver(reader, share.name, asked.days, asked.now);
    return {makePrintable(share.name), makePrintable(formatUsed(reader, share, extent)),
            makePrintable(change ? history::formatChange(*change) : kNone),
            makePrintable(renderFate(share, extent, startOf(asked)))};
}

std::string renderShareTable(const Reader& reader, const Extent& extent, const HistoryView& asked)
{
    using enum Align;
    constexpr auto kColumns = std::to_array<Align>({kLeft, kRight, kRight, kLeft});
    std::vector<TableRow> rows = {{makePrintable(trc("heading", "SHARE")),
                                   makePrintable(trc("heading", "USED")),
                                   makePrintable(trc("heading", "CHANGE")),
                                   {}}};
    for (const KnownShare& share : reader.shares()) {
        if (isShown(share, extent, startOf(asked))) {
            rows.push_back(makeRow(reader, share, extent, asked));
        }
    }
    std::string table = layOutTable(kColumns, rows);
    // Most rows have nothing in their last column.
    for (std::size_t blank = 0; (blank = table.find(" \n", blank)) != std::string::npos;) {
        table.erase(blank, 1);
        blank -= (blank > 0) ? 1 : 0;
    }
    return table;
}

// ---- The disk and the history itself -----------------------------------------------------------

std::string renderDiskPlot(const Reader& reader, const HistoryView& asked)
{
    std::vector<PlotPoint> points;
    for (const history::DiskPoint& point : reader.diskPoints(startOf(asked))) {
        points.push_back({point.published, point.capacity.used});
    }
    const std::string plot = renderPlot(points);
    return plot.empty() ? "" : std::string(tr("Used on the disk:")) + "\n" + plot + "\n";
}

std::optional<double> forecast(const Reader& reader)
{
    constexpr std::time_t kMostSeconds = std::time_t{100} * 86400;
    return history::daysUntilFull(
        reader.diskPoints(reader.extent().last.value_or(0) - kMostSeconds));
}

std::string renderForecast(const Reader& reader)
{
    const std::optional<double> days = forecast(reader);
    const std::string sentence = days ? fill(tr("If it goes on filling like this, the disk is {}."),
                                             {history::formatForecast(*days)})
                                      : tr("The history does not show when the disk will be full.");
    return sentence + "\n";
}

/// A status is remembered within a minute or so; of one that is older and missing people are told.
std::string renderTrouble(const Extent& extent, const HistoryView& asked)
{
    constexpr std::time_t kPatience = 600;
    std::string text;
    if (extent.begunAnew) {
        text +=
            fill(tr("The history began anew on {1}: its file was damaged, and is now {2}."),
                 {formatDay(*extent.begunAnew), std::string(history::kFile) + history::kAside}) +
            "\n";
    }
    const bool isOld = asked.published && asked.now - *asked.published > kPatience;
    if (isOld && extent.last && *extent.last < *asked.published) {
        text += std::string(tr("The last status is not in the history: \"vokctl history "
                               "--remember\" says why, if root runs it.")) +
                "\n";
    }
    return text;
}

// ---- One share ----------------------------------------------------------------------------------

std::string renderNames(const KnownShare& share)
{
    std::string text;
    for (const history::FormerName& former : share.formerNames) {
        text += fill(tr("Until {1} its name was {2}."),
                     {formatDay(former.renamed), makePrintable(former.name).text}) +
                "\n";
    }
    return text;
}

/// As many days as there are entries for, at most those asked for; these if there are none.
std::chrono::days knownDays(const Reader& reader, const KnownShare& share, std::chrono::days asked)
{
    // A change is measured from an entry that may be two days older than the days asked for.
    constexpr std::chrono::days kTolerance{2};
    const std::chrono::seconds span = asked + kTolerance;
    const std::int64_t since = std::max<std::int64_t>(share.last - span.count(), 0);
    const auto points = reader.points(share.name, static_cast<std::time_t>(since));
    const std::chrono::days known = history::knownDays(points, asked);
    return (known.count() > 0) ? known : asked;
}

std::string renderFigures(const Reader& reader, const KnownShare& share, const HistoryView& asked)
{
    const auto last = reader.lastMeasured(share.name, share.last);
    if (!last) {
        return std::string(tr("It has never been measured.")) + "\n";
    }
    const std::chrono::days known = knownDays(reader, share, asked.days);
    const auto change = history::changeOver(reader, share.name, known, asked.now);
    const auto days = static_cast<std::uint64_t>((change ? known : asked.days).count());
    const std::string used = std::to_string(last->used->value) + " " + last->used->unit;
    return fill(tr("Used: {1} on {2}"), {used, formatDay(last->published)}) + "\n" +
           fill(trn("Change over {1} day: {2}", "Change over {1} days: {2}", days),
                {std::to_string(days), change ? history::formatChange(*change) : tr("not known")}) +
           "\n";
}

} // namespace

std::string renderHistory(const Reader& reader, const HistoryView& asked)
{
    const Extent extent = reader.extent(asked.now);
    return renderDiskPlot(reader, asked) + renderShareTable(reader, extent, asked) + "\n" +
           renderForecast(reader) + renderTrouble(extent, asked);
}

std::string renderHistory(const Reader& reader, const KnownShare& share, const HistoryView& asked)
{
    const Extent extent = reader.extent(asked.now);
    std::vector<PlotPoint> points;
    for (const history::Point& point : reader.points(share.name, startOf(asked))) {
        if (point.used) {
            points.push_back({point.published, point.used->kibibytes()});
        }
    }
    const std::string plot = renderPlot(points);
    const bool isGone = history::fateOf(share, extent, 0) == Fate::kVanished;
    const std::string name = makePrintable(share.name).text;
    const std::string title =
        isGone ? fill(tr("{1}, known since {2}, gone since {3}"),
                      {name, formatDay(share.first), formatDay(share.last)})
               : fill(tr("{1}, known since {2}"), {name, formatDay(share.first)});
    return title + "\n" + (plot.empty() ? "" : "\n" + plot) + "\n" +
           renderFigures(reader, share, asked) + renderNames(share) + renderTrouble(extent, asked);
}

} // namespace client
