// SPDX-License-Identifier: MIT
#pragma once

#include <asio/any_io_executor.hpp>
#include <asio/awaitable.hpp>
#include <asio/steady_timer.hpp>
#include <deque>
#include <memory>

namespace service {

/// One at a time, first come, first served: the handlers share their work files, so only one
/// request may run.
class Turn {
  public:
    /// Waits for the turn. Whoever gets it gives it back with release().
    [[nodiscard]] asio::awaitable<void> acquire();

    /// Hands the turn to whoever has waited longest.
    void release();

  private:
    std::deque<std::shared_ptr<asio::steady_timer>> waiting_;
    bool isTaken_ = false;
};

} // namespace service
