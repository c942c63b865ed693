// SPDX-License-Identifier: MIT
#pragma once

#include <asio/any_io_executor.hpp>
#include <asio/awaitable.hpp>
#include <asio/steady_timer.hpp>
#include <deque>
#include <memory>

namespace service {

/// Requests run one at a time, in the order in which they came, because the handlers use the same
/// work files.
class RequestQueue {
  public:
    /// Waits for this request's turn. Returns true when it begins; release() ends it. Returns false
    /// if the queue is closed before.
    [[nodiscard]] asio::awaitable<bool> acquire();

    /// Ends the turn; the request that has waited longest is next.
    void release();

    /// From now on no turn begins; a turn that has begun goes on.
    void close();

  private:
    /// A place in the queue. The timer never ends; cancelling it wakes the request.
    struct Place {
        asio::steady_timer call;
        bool hasTurn = false;
    };

    std::deque<std::shared_ptr<Place>> waiting_;
    bool isTaken_ = false;
    bool isClosed_ = false;
};

} // namespace service
