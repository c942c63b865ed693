// SPDX-License-Identifier: MIT
#include "client/plot.h"

#include <algorithm>
#include <array>
#include <optional>

#include "view/terminal_text.h"
#include "view/wording.h"

namespace client {
namespace {

constexpr std::size_t kColumns = 60;
constexpr std::size_t kRows = 8;

using Columns = std::array<std::optional<std::uint64_t>, kColumns>;

struct Range {
    std::uint64_t least;
    std::uint64_t most;
};

Range rangeOf(const std::vector<PlotPoint>& points)
{
    const auto [least, most] = std::ranges::minmax(points, {}, &PlotPoint::kibibytes);
    return {least.kibibytes, most.kibibytes};
}

Columns sortIntoColumns(const std::vector<PlotPoint>& points)
{
    const std::time_t start = points.front().time;
    const std::time_t span = std::max<std::time_t>(points.back().time - start, 1);
    Columns columns;
    for (const PlotPoint& point : points) {
        const auto place = (point.time - start) * static_cast<std::time_t>(kColumns - 1) / span;
        auto& column = columns.at(static_cast<std::size_t>(place));
        column = std::max(column.value_or(0), point.kibibytes);
    }
    return columns;
}

/// The row of a size, from 0 at the bottom. Sizes are far below 2^60, so the product fits.
std::size_t rowOf(std::uint64_t size, Range range, std::size_t rows)
{
    const std::uint64_t span = std::max<std::uint64_t>(range.most - range.least, 1);
    return static_cast<std::size_t>(((size - range.least) * (rows - 1) + span / 2) / span);
}

std::string renderRow(const Columns& columns, Range range, std::size_t row, std::size_t rows)
{
    std::string line;
    for (const auto& column : columns) {
        line += (column && rowOf(*column, range, rows) == row) ? '*' : ' ';
    }
    return line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
}

std::string padLeft(const std::string& text, std::size_t width)
{
    const std::size_t columns = view::makePrintable(text).columns;
    return std::string(width - std::min(width, columns), ' ') + text;
}

std::string renderDays(const std::vector<PlotPoint>& points)
{
    const std::string first = view::formatIsoDate(view::dayOf(points.front().time));
    const std::string last = view::formatIsoDate(view::dayOf(points.back().time));
    return first + padLeft(last, kColumns - first.size()) + "\n";
}

} // namespace

std::string renderPlot(const std::vector<PlotPoint>& points)
{
    if (points.size() < 2) {
        return "";
    }
    const Columns columns = sortIntoColumns(points);
    const Range range = rangeOf(points);
    const std::size_t rows = (range.most > range.least) ? kRows : 1;
    const std::string most = view::formatKibibytes(range.most);
    const std::string least = view::formatKibibytes(range.least);
    const std::size_t width =
        std::max(view::makePrintable(most).columns, view::makePrintable(least).columns);
    std::string plot;
    for (std::size_t row = rows; row-- > 0;) {
        const std::string label = (row + 1 == rows) ? most : (row == 0 ? least : "");
        plot += padLeft(label, width) + " |" + renderRow(columns, range, row, rows);
    }
    return plot + std::string(width + 2, ' ') + renderDays(points);
}

} // namespace client
