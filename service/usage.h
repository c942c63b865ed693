// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string_view>

#include "vokcontrol.h"

namespace service {

/// Counts the commands that are received.
class Usage {
  public:
    /// Goes on from what was saved last.
    Usage();

    void count(std::string_view request);

    /// Writes the table as it is, whenever the last time was.
    void save() const;

  private:
    CommandUsage table_{};
    std::int32_t lastSave_ = 0;
};

} // namespace service
