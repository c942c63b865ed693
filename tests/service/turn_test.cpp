// SPDX-License-Identifier: MIT
#include "service/turn.h"

#include <asio/co_spawn.hpp>
#include <asio/detached.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/use_awaitable.hpp>
#include <gtest/gtest.h>
#include <vector>

namespace {

asio::awaitable<void> takePart(service::Turn& turn, int number, std::vector<int>& order,
                               int& inside)
{
    co_await turn.acquire();
    EXPECT_EQ(++inside, 1) << "one at a time";
    order.push_back(number);
    co_await asio::post(asio::use_awaitable);
    --inside;
    turn.release();
}

TEST(Turn, firstComeFirstServedOneAtATime)
{
    asio::io_context context;
    service::Turn turn;
    std::vector<int> order;
    int inside = 0;
    for (int number = 0; number < 50; ++number) {
        asio::co_spawn(context, takePart(turn, number, order, inside), asio::detached);
    }
    context.run();
    std::vector<int> expected(50);
    for (int number = 0; number < 50; ++number) {
        expected[static_cast<std::size_t>(number)] = number;
    }
    EXPECT_EQ(order, expected);
}

TEST(Turn, isFreeAgainAfterwards)
{
    asio::io_context context;
    service::Turn turn;
    std::vector<int> order;
    int inside = 0;
    for (int round = 0; round < 3; ++round) {
        asio::co_spawn(context, takePart(turn, round, order, inside), asio::detached);
        context.run();
        context.restart();
    }
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2}));
}

} // namespace
