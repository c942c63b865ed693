// SPDX-License-Identifier: MIT
//
// collection_progress.h: how far a collection is, in a line of a terminal.
#pragma once

#include <string>

#include "view/progress.h"
#include "view/published_status.h"

namespace client {

/// "Measuring Media, 3 of 8 shares, since 18:56:02", local time; what is not known is left out.
[[nodiscard]] std::string formatProgress(const view::Progress& progress);

/// A line on standard error that is written again and again, if that is a terminal. It is blank at
/// the end.
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
