// SPDX-License-Identifier: MIT
#include "service/request_queue.h"

#include <asio/co_spawn.hpp>
#include <asio/detached.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/use_awaitable.hpp>
#include <gtest/gtest.h>
#include <vector>

namespace {

asio::awaitable<void> takePart(service::RequestQueue& queue, int number, std::vector<int>& order,
                               int& inside)
{
    EXPECT_TRUE(co_await queue.acquire());
    EXPECT_EQ(++inside, 1) << "one at a time";
    order.push_back(number);
    co_await asio::post(asio::use_awaitable);
    --inside;
    queue.release();
}

TEST(RequestQueue, firstComeFirstServedOneAtATime)
{
    asio::io_context context;
    service::RequestQueue queue;
    std::vector<int> order;
    int inside = 0;
    for (int number = 0; number < 50; ++number) {
        asio::co_spawn(context, takePart(queue, number, order, inside), asio::detached);
    }
    context.run();
    std::vector<int> expected(50);
    for (int number = 0; number < 50; ++number) {
        expected[static_cast<std::size_t>(number)] = number;
    }
    EXPECT_EQ(order, expected);
}

TEST(RequestQueue, isFreeAgainAfterwards)
{
    asio::io_context context;
    service::RequestQueue queue;
    std::vector<int> order;
    int inside = 0;
    for (int round = 0; round < 3; ++round) {
        asio::co_spawn(context, takePart(queue, round, order, inside), asio::detached);
        context.run();
        context.restart();
    }
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2}));
}

TEST(RequestQueue, closedOneSendsAwayWhoWaitsAndWhoComes)
{
    asio::io_context context;
    service::RequestQueue queue;
    std::vector<bool> turns;
    const auto come = [&]() -> asio::awaitable<void> { turns.push_back(co_await queue.acquire()); };
    for (int number = 0; number < 3; ++number) {
        asio::co_spawn(context, come(), asio::detached);
    }
    context.poll();
    EXPECT_EQ(turns, std::vector<bool>{true});
    queue.close();
    asio::co_spawn(context, come(), asio::detached);
    context.run();
    EXPECT_EQ(turns, (std::vector<bool>{true, false, false, false}));
    queue.release();
}

} // namespace
