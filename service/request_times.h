// SPDX-License-Identifier: MIT
//
// request_times.h: how long requests have taken since the service began, for monitoring.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "service/upload.h"

namespace service {

/// A file in the service's folder, FOLDER/requests, that only root can read: a line for each
/// command, with its code, how many requests have ended, and how many milliseconds they took in
/// all. Codes that the protocol does not have are "other". The file is always whole; if it cannot
/// be written, it stays as it was.
class RequestTimes {
  public:
    explicit RequestTimes(std::string folder = kRunFolder);

    /// Adds a request that has ended.
    void add(std::string_view request, std::chrono::milliseconds taken);

  private:
    struct Sum {
        std::uint64_t count = 0;
        std::int64_t milliseconds = 0;
    };

    void write() const;

    std::string path_;
    std::map<std::string, Sum, std::less<>> sums_;
};

} // namespace service
