// SPDX-License-Identifier: MIT
//
// history_report.h: the history as people and programs read it. Reads the history's file, and
// nothing else.
#pragma once

#include <chrono>
#include <ctime>
#include <optional>
#include <string>

#include "history/reader.h"

namespace client {

/// What is asked for.
struct HistoryView {
    std::time_t now = 0;
    std::chrono::days days{30};           ///< how far back
    std::optional<std::time_t> published; ///< of the status that is there now, if any
};

/// The disk's course, a line each share with its change, what became of shares, the forecast, and
/// whether the history has stopped or begun anew.
[[nodiscard]] std::string renderHistory(const history::Reader& reader, const HistoryView& asked);

/// The course of one share, and its figures.
[[nodiscard]] std::string renderHistory(const history::Reader& reader,
                                        const history::KnownShare& share, const HistoryView& asked);

/// The same for programs: one JSON object in ASCII.
[[nodiscard]] std::string renderHistoryJson(const history::Reader& reader,
                                            const HistoryView& asked);
[[nodiscard]] std::string renderHistoryJson(const history::Reader& reader,
                                            const history::KnownShare& share,
                                            const HistoryView& asked);

/// The same as comma-separated values under a heading, a line each entry; times are in UTC.
[[nodiscard]] std::string renderHistoryCsv(const history::Reader& reader, const HistoryView& asked);
[[nodiscard]] std::string renderHistoryCsv(const history::Reader& reader,
                                           const history::KnownShare& share,
                                           const HistoryView& asked);

} // namespace client
