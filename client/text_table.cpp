// SPDX-License-Identifier: MIT
#include "client/text_table.h"

#include <algorithm>

namespace client {
namespace {

std::size_t widthOf(const std::vector<TableRow>& rows, std::size_t column)
{
    std::size_t width = 0;
    for (const TableRow& row : rows) {
        width = std::max(width, row[column].columns);
    }
    return width;
}

} // namespace

std::string layOutTable(std::span<const Align> columns, const std::vector<TableRow>& rows)
{
    std::vector<std::string> lines(rows.size());
    for (std::size_t column = 0; column < columns.size(); ++column) {
        const std::size_t width = widthOf(rows, column);
        const bool isLast = column + 1 == columns.size();
        for (std::size_t i = 0; i < rows.size(); ++i) {
            const view::TerminalText& cell = rows[i][column];
            const std::string padding(width - cell.columns, ' ');
            if (columns[column] == Align::kRight) {
                lines[i] += padding + cell.text;
            } else {
                lines[i] += cell.text + (isLast ? "" : padding);
            }
            lines[i] += isLast ? "\n" : "  ";
        }
    }
    std::string table;
    for (const std::string& line : lines) {
        table += line;
    }
    return table;
}

} // namespace client
