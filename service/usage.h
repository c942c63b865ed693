// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string_view>

#include "vokcontrol.h"

namespace service {

/// Counts the commands that are received. Counting takes shell lines, so a request's own process
/// does it: the table is in memory that the service shares with the processes that it starts.
class Usage {
  public:
    /// Throws std::runtime_error where there is no memory to share.
    Usage();
    ~Usage();
    Usage(const Usage&) = delete;
    Usage& operator=(const Usage&) = delete;

    /// Counts a request, in its own process; the first one goes on from what was saved last.
    void count(std::string_view request);

    /// Writes the table as it is, whenever the last time was. Where nothing was counted, the file
    /// stays as it is.
    void save() const;

  private:
    struct Shared {
        CommandUsage table;
        std::int32_t lastSave;
        bool isRead; ///< what was saved last is in the table
    };

    Shared* shared_;
};

} // namespace service
