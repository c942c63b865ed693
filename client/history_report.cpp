// SPDX-License-Identifier: MIT
#include "client/history_report.h"

#include <array>

#include "client/plot.h"
#include "client/text_table.h"
#include "history/trend.h"
#include "view/terminal_text.h"

namespace client {
namespace {

using history::Extent;
using history::Fate;
using history::KnownShare;
using history::Reader;
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
        return "new since " + formatDay(share.first);
    case Fate::kVanished:
        return "gone since " + formatDay(share.last);
    case Fate::kRenamed: {
        const history::FormerName& former = share.formerNames.back();
        return "was " + former.name + " until " + formatDay(former.renamed);
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
    const auto change = history::changeOver(reader, share.name, asked.days);
    return {makePrintable(share.name), makePrintable(formatUsed(reader, share, extent)),
            makePrintable(change ? history::formatChange(*change) : kNone),
            makePrintable(renderFate(share, extent, startOf(asked)))};
}

std::string renderShareTable(const Reader& reader, const Extent& extent, const HistoryView& asked)
{
    using enum Align;
    constexpr auto kColumns = std::to_array<Align>({kLeft, kRight, kRight, kLeft});
    std::vector<TableRow> rows = {
        {makePrintable("SHARE"), makePrintable("USED"), makePrintable("CHANGE"), {}}};
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
    return plot.empty() ? "" : "Used on the disk:\n" + plot + "\n";
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
    return days ? "If the disk goes on like this, it is " + history::formatForecast(*days) + ".\n"
                : "When the disk will be full cannot be said from its course.\n";
}

/// A status is remembered within a minute or so; of one that is older and missing people are told.
std::string renderTrouble(const Extent& extent, const HistoryView& asked)
{
    constexpr std::time_t kPatience = 600;
    std::string text;
    if (extent.begunAnew) {
        text += "The history began anew on " + formatDay(*extent.begunAnew) +
                ": its file was damaged, and is now " + history::kFile + history::kAside + ".\n";
    }
    const bool isOld = asked.published && asked.now - *asked.published > kPatience;
    if (isOld && extent.last && *extent.last < *asked.published) {
        text += "The last status is not in the history: \"vokctl history --remember\" says why, if "
                "root runs it.\n";
    }
    return text;
}

// ---- One share ----------------------------------------------------------------------------------

std::string renderNames(const KnownShare& share)
{
    std::string text;
    for (const history::FormerName& former : share.formerNames) {
        text += "Until " + formatDay(former.renamed) + " its name was " +
                makePrintable(former.name).text + ".\n";
    }
    return text;
}

std::string renderFigures(const Reader& reader, const KnownShare& share, const HistoryView& asked)
{
    const auto last = reader.lastMeasured(share.name, share.last);
    if (!last) {
        return "It has never been measured.\n";
    }
    const auto change = history::changeOver(reader, share.name, asked.days);
    const std::string days =
        view::formatCount(static_cast<std::uint64_t>(asked.days.count()), "day", "days");
    return "Used: " + std::to_string(last->used->value) + " " + last->used->unit + " on " +
           formatDay(last->published) + "\n" + "Change over " + days + ": " +
           (change ? history::formatChange(*change) : "not known") + "\n";
}

} // namespace

std::string renderHistory(const Reader& reader, const HistoryView& asked)
{
    const Extent extent = reader.extent();
    return renderDiskPlot(reader, asked) + renderShareTable(reader, extent, asked) + "\n" +
           renderForecast(reader) + renderTrouble(extent, asked);
}

std::string renderHistory(const Reader& reader, const KnownShare& share, const HistoryView& asked)
{
    const Extent extent = reader.extent();
    std::vector<PlotPoint> points;
    for (const history::Point& point : reader.points(share.name, startOf(asked))) {
        if (point.used) {
            points.push_back({point.published, point.used->kibibytes()});
        }
    }
    const std::string plot = renderPlot(points);
    const bool isGone = history::fateOf(share, extent, 0) == Fate::kVanished;
    return makePrintable(share.name).text + ", known since " + formatDay(share.first) +
           (isGone ? ", gone since " + formatDay(share.last) : "") + "\n" +
           (plot.empty() ? "" : "\n" + plot) + "\n" + renderFigures(reader, share, asked) +
           renderNames(share) + renderTrouble(extent, asked);
}

} // namespace client
