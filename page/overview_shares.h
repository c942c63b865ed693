// SPDX-License-Identifier: MIT
//
// overview_shares.h: the table of shares, and the orders that it can have.
#pragma once

#include <string_view>

#include "config/configuration.h"
#include "page/html.h"
#include "page/past.h"
#include "view/judgement.h"

namespace page {

/// A column that the table can be sorted by.
enum class Column { kName, kUsed, kBackup };

struct ShareOrder {
    std::string_view key;   ///< the field "sort" of the page's address
    std::string_view query; ///< follows the overview's path in its address
    Column column;
    bool isDescending;
};

/// The order that a field "sort" asks for. The largest share comes first if it asks for none.
[[nodiscard]] const ShareOrder& readOrder(std::string_view key);

/// The shares in an order, each with its size and its last backup as the configuration judges it.
/// Heads of columns are links that sort, so that it works without script; names lead to the pages
/// of the shares. A share's last 30 days are in a column if the history has any, and
/// below the table are those that are gone since.
[[nodiscard]] Html shareTable(const view::Situation& situation,
                              const config::Configuration& configuration, const ShareOrder& order,
                              const Past& past);

} // namespace page
