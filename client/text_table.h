// SPDX-License-Identifier: MIT
//
// text_table.h: columns of text for a terminal.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "view/terminal_text.h"

namespace client {

enum class Align { kLeft, kRight };

/// A row has as many cells as there are columns.
using TableRow = std::vector<view::TerminalText>;

/// The rows as lines. Each column is as wide as its widest cell; columns are two blanks apart. A
/// line ends after its last cell, without blanks.
[[nodiscard]] std::string layOutTable(std::span<const Align> columns,
                                      const std::vector<TableRow>& rows);

} // namespace client
