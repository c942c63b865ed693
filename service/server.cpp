// SPDX-License-Identifier: MIT
#include "service/server.h"

#include <array>
#include <asio/co_spawn.hpp>
#include <asio/detached.hpp>
#include <asio/experimental/as_tuple.hpp>
#include <asio/experimental/awaitable_operators.hpp>
#include <asio/read.hpp>
#include <asio/signal_set.hpp>
#include <asio/steady_timer.hpp>
#include <asio/this_coro.hpp>
#include <asio/use_awaitable.hpp>
#include <asio/write.hpp>
#include <csignal>
#include <limits>
#include <optional>

#include "service/child.h"
#include "service/log.h"

namespace service {
namespace {

using namespace asio::experimental::awaitable_operators;
using Socket = asio::local::stream_protocol::socket;
using Clock = std::chrono::steady_clock;

constexpr auto kQuietly = asio::experimental::as_tuple(asio::use_awaitable);

asio::awaitable<void> pause(std::chrono::milliseconds time)
{
    asio::steady_timer timer(co_await asio::this_coro::executor, time);
    co_await timer.async_wait(kQuietly);
}

/// Reads up to the end of what the client sends. One byte more than a request may have tells that it
/// is too long.
asio::awaitable<std::string> readToEnd(Socket& socket)
{
    std::string request(VOK_REQUEST_SIZE + 1, '\0');
    const auto [error, size] = co_await asio::async_read(socket, asio::buffer(request), kQuietly);
    const bool isWhole = !error || error == asio::error::eof;
    request.resize(isWhole ? size : 0);
    co_return request;
}

/// The client's request; nothing where it sent none in time, or too much.
asio::awaitable<std::optional<std::string>> receive(Socket& socket, std::chrono::seconds time)
{
    auto first = co_await (readToEnd(socket) || pause(time));
    if (first.index() == 1) {
        log("a client sent no whole request in time");
        co_return std::nullopt;
    }
    std::string& request = std::get<0>(first);
    if (request.empty()) {
        co_return std::nullopt;
    }
    if (request.size() > VOK_REQUEST_SIZE) {
        log("a client sent more than 4096 bytes; they were refused");
        co_return std::nullopt;
    }
    co_return std::move(request);
}

} // namespace

Server::Server(asio::io_context& context, Listener& listener, Limits limits)
    : context_(context), acceptor_(listener.acceptor()), limits_(limits)
{
}

void Server::run()
{
    asio::co_spawn(context_, acceptClients(), asio::detached);
    asio::co_spawn(context_, awaitStop(), asio::detached);
    context_.run();
    usage_.save();
}

asio::awaitable<void> Server::acceptClients()
{
    constexpr std::chrono::milliseconds kRest{50};
    while (!isStopping_) {
        auto [error, socket] = co_await acceptor_.async_accept(kQuietly);
        if (!error) {
            asio::co_spawn(context_, serve(std::move(socket)), asio::detached);
        } else if (!isStopping_) {
            // No descriptor is left: the client waits in the queue until another one leaves.
            co_await pause(kRest);
        }
    }
}

asio::awaitable<void> Server::serve(Socket socket)
{
    std::optional<std::string> request = co_await receive(socket, limits_.send);
    if (!request) {
        co_return;
    }
    co_await turn_.acquire();
    if (isStopping_) {
        turn_.release();
        co_return;
    }
    ++inHand_;
    const std::string answer = co_await runRequest(std::move(*request));
    // From here on a slow client holds up nobody.
    turn_.release();
    co_await (asio::async_write(socket, asio::buffer(answer), kQuietly) || pause(limits_.send));
    --inHand_;
    endServing();
}

/// Runs a request in a child.
/// @return the answer; empty where the child did not come to a good end
asio::awaitable<std::string> Server::runRequest(std::string request)
{
    const auto start = Clock::now();
    lastNumber_ = (lastNumber_ < std::numeric_limits<int>::max()) ? lastNumber_ + 1 : 1;
    const int number = lastNumber_;
    Child child(request, number);
    // Counting costs shell lines of its own; the child works meanwhile.
    usage_.count(request);
    Outcome outcome = co_await child.finish(limits_.request);
    log(describe(number, request, outcome,
                 std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start)));
    co_return std::move(outcome.answer);
}

asio::awaitable<void> Server::awaitStop()
{
    asio::signal_set signals(context_, SIGTERM, SIGINT);
    co_await signals.async_wait(kQuietly);
    isStopping_ = true;
    acceptor_.close();
    endServing();
}

/// Ends the loop once nothing is in hand any more.
void Server::endServing()
{
    if (isStopping_ && inHand_ == 0) {
        context_.stop();
    }
}

} // namespace service
