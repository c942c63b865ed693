// SPDX-License-Identifier: MIT
#include "service/request_queue.h"

#include <asio/experimental/as_tuple.hpp>
#include <asio/this_coro.hpp>
#include <asio/use_awaitable.hpp>

namespace service {

asio::awaitable<bool> RequestQueue::acquire()
{
    if (isClosed_) {
        co_return false;
    }
    if (!isTaken_) {
        isTaken_ = true;
        co_return true;
    }
    const auto place = std::make_shared<Place>(asio::steady_timer(
        co_await asio::this_coro::executor, asio::steady_timer::time_point::max()));
    waiting_.push_back(place);
    co_await place->call.async_wait(asio::experimental::as_tuple(asio::use_awaitable));
    co_return place->hasTurn;
}

void RequestQueue::release()
{
    if (waiting_.empty()) {
        isTaken_ = false;
        return;
    }
    waiting_.front()->hasTurn = true;
    waiting_.front()->call.cancel();
    waiting_.pop_front();
}

void RequestQueue::close()
{
    isClosed_ = true;
    for (const auto& place : waiting_) {
        place->call.cancel();
    }
    waiting_.clear();
}

} // namespace service
