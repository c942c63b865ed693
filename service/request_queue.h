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
    /// Returns true when it is this request's turn, which ends with one release(); false if the
    /// queue was closed before that.
    [[nodiscard]] asio::awaitable<bool> acquire();

    /// Lets the request run that has waited longest.
    void release();

    /// From now on no request has its turn any more; the one that has keeps it.
    void close();

  private:
    /// A place in the queue; the timer never ends, and its cancellation is the call.
    struct Place {
        asio::steady_timer call;
        bool hasTurn = false;
    };

    std::deque<std::shared_ptr<Place>> waiting_;
    bool isTaken_ = false;
    bool isClosed_ = false;
};

} // namespace service
