// SPDX-License-Identifier: MIT
//
// share_past.h: what a share's page says about its past.
#pragma once

#include <chrono>
#include <ctime>
#include <optional>
#include <string_view>

#include "config/configuration.h"
#include "page/html.h"
#include "page/past.h"

namespace page {

/// How far back a share's page looks.
struct Period {
    std::string_view key; ///< the field "period" of the page's address
    const char* label;    ///< to be translated
    std::chrono::days days;
};

/// The period that a field asks for; 30 days if it asks for none.
[[nodiscard]] const Period& readPeriod(std::string_view key);

/// From when on entries are needed to show a period; 0 if all are.
[[nodiscard]] std::time_t startOf(const Period& period, std::time_t now);

/// A card with a plot of the period, links to the other ones, what became of the share, and the
/// figures as a table.
/// @param past  nothing if there is no history of the share
[[nodiscard]] Html pastCard(std::string_view name, const std::optional<SharePast>& past,
                            const Period& period, std::time_t now,
                            const config::Configuration& configuration);

} // namespace page
