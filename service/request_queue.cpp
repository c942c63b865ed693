// SPDX-License-Identifier: MIT
#include "service/request_queue.h"

#include <asio/experimental/as_tuple.hpp>
#include <asio/this_coro.hpp>
#include <asio/use_awaitable.hpp>

namespace service {

asio::awaitable<void> RequestQueue::acquire()
{
    if (!isTaken_) {
        isTaken_ = true;
        co_return;
    }
    // A timer that never ends stands for a place in the queue; its cancellation is the call.
    const auto place = std::make_shared<asio::steady_timer>(co_await asio::this_coro::executor,
                                                            asio::steady_timer::time_point::max());
    waiting_.push_back(place);
    co_await place->async_wait(asio::experimental::as_tuple(asio::use_awaitable));
}

void RequestQueue::release()
{
    if (waiting_.empty()) {
        isTaken_ = false;
        return;
    }
    waiting_.front()->cancel();
    waiting_.pop_front();
}

} // namespace service
