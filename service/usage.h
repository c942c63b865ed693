// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string_view>

#include "vokcontrol.h"

namespace service {

/// Counts the commands that are received. Counting runs shell lines, so a request's process does
/// it, in a table in memory that the service shares with the processes that it starts.
class Usage {
  public:
    /// Throws std::runtime_error if there is no memory.
    Usage();
    ~Usage();
    Usage(const Usage&) = delete;
    Usage& operator=(const Usage&) = delete;

    /// Counts a request; to be called in its process. The first call reads the saved table.
    void count(std::string_view request);

    /// Writes the table, even if it was saved a moment ago. If nothing was counted, the file is not
    /// changed.
    void save() const;

  private:
    struct Shared {
        CommandUsage table;
        std::int32_t lastSave;
        bool isRead; ///< the saved table has been read
    };

    Shared* shared_;
};

} // namespace service
