// SPDX-License-Identifier: MIT
//
// collection_progress.h: how far a collection is, in a line of a terminal.
#pragma once

#include <ctime>
#include <optional>
#include <string>

#include "view/collector.h"
#include "view/published_status.h"

namespace client {

/// "Measuring Media, 3 of 8 shares, since 18:56:02", local time; unknown parts are left out. The
/// shares are measured in the order of the last status.
[[nodiscard]] std::string formatProgress(const view::Collector& collector,
                                         const view::PublishedStatus& status);

/// A line on standard error that is overwritten each time, if that is a terminal. It is blank after
/// this object is destroyed.
class ProgressLine {
  public:
    ProgressLine();
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    void show(const view::PublishedStatus& status);

  private:
    bool isTerminal_;
    std::string shown_;
};

} // namespace client
