// SPDX-License-Identifier: MIT
#pragma once

#include <asio/any_io_executor.hpp>
#include <asio/awaitable.hpp>
#include <asio/steady_timer.hpp>
#include <deque>
#include <memory>

namespace service {

/// Requests run one at a time, first come, first served: the handlers share their work files.
class RequestQueue {
  public:
    /// Returns when it is this request's turn. Each acquire() is followed by one release().
    [[nodiscard]] asio::awaitable<void> acquire();

    /// Lets the request run that has waited longest.
    void release();

  private:
    std::deque<std::shared_ptr<asio::steady_timer>> waiting_;
    bool isTaken_ = false;
};

} // namespace service
