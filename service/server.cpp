// SPDX-License-Identifier: MIT
#include "service/server.h"

#include <algorithm>
#include <array>
#include <asio/co_spawn.hpp>
#include <asio/detached.hpp>
#include <asio/experimental/as_tuple.hpp>
#include <asio/experimental/awaitable_operators.hpp>
#include <asio/read.hpp>
#include <asio/steady_timer.hpp>
#include <asio/this_coro.hpp>
#include <asio/use_awaitable.hpp>
#include <asio/write.hpp>
#include <fcntl.h>
#include <limits>
#include <optional>
#include <poll.h>
#include <sys/stat.h>
#include <tuple>

#include "cmdsvc/commands.h"
#include "cmdsvc/protocol.h"
#include "cmdsvc/request_reader.h"
#include "service/gate.h"
#include "service/kept_files.h"
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

/// Reads what the client sends to its end, but at most one byte more than a request may have: then
/// it is too long.
asio::awaitable<std::string> readToEnd(Socket& socket)
{
    std::string request(VOK_REQUEST_SIZE + 1, '\0');
    const auto [error, size] = co_await asio::async_read(socket, asio::buffer(request), kQuietly);
    const bool isWhole = !error || error == asio::error::eof;
    request.resize(isWhole ? size : 0);
    co_return request;
}

asio::awaitable<void> send(Socket& socket, std::string bytes, std::chrono::seconds time)
{
    co_await (asio::async_write(socket, asio::buffer(bytes), kQuietly) || pause(time));
}

/// The bytes of a status that the service itself answers.
std::string serviceStatus(cmdsvc::Status code)
{
    const cmdsvc::StatusBytes status = cmdsvc::statusBytes(cmdsvc::kServiceCode, code);
    return {status.begin(), status.end()};
}

/// Whether a client has closed its connection, not only its sending side.
bool hasLeft(Socket& socket)
{
    pollfd connection = {socket.native_handle(), 0, 0};
    return ::poll(&connection, 1, 0) == 1 && (connection.revents & (POLLHUP | POLLERR)) != 0;
}

asio::awaitable<void> discard(Socket& socket)
{
    std::array<char, VOK_REQUEST_SIZE> piece;
    asio::error_code error;
    while (!error) {
        std::tie(error, std::ignore) =
            co_await socket.async_read_some(asio::buffer(piece), kQuietly);
    }
}

} // namespace

Server::Server(asio::io_context& context, Listener& listener, asio::signal_set& stop,
               Admission admission, Limits limits, std::string path)
    : context_(context),
      acceptor_(listener.acceptor()),
      keepsClients_(listener.keepsClients()),
      stop_(stop),
      stopping_(context, asio::steady_timer::time_point::max()),
      admission_(admission),
      limits_(limits),
      path_(std::move(path)),
      mostClients_(countMostClients()),
      pauses_(limits.passwordPause)
{}

void Server::run()
{
    static_cast<void>(upload_.repair());
    ++busy_;
    asio::co_spawn(context_, acceptClients(), [this](const std::exception_ptr&) { endOne(); });
    asio::co_spawn(context_, awaitStop(), asio::detached);
    context_.run();
    usage_.save();
}

asio::awaitable<void> Server::acceptClients()
{
    constexpr std::chrono::milliseconds kRest{50};
    while (!isStopping_) {
        if (busy_ > mostClients_) {
            co_await pause(kRest);
            continue;
        }
        auto [error, socket] = co_await acceptor_.async_accept(kQuietly);
        if (!error) {
            welcome(std::move(socket));
        } else if (!isStopping_) {
            // No descriptor is left in the whole system; the client waits at the socket.
            co_await pause(kRest);
        }
    }
}

/// Accepts the clients that wait at the service's own socket: it is removed with the service.
void Server::acceptRemaining()
{
    asio::error_code error;
    acceptor_.non_blocking(true, error);
    while (!error) {
        Socket socket(context_);
        acceptor_.accept(socket, error);
        if (!error) {
            welcome(std::move(socket));
        }
    }
}

void Server::welcome(Socket socket)
{
    // The processes that the service starts must not hold it.
    ::fcntl(socket.native_handle(), F_SETFD, FD_CLOEXEC);
    const std::optional<Peer> peer = peerOf(socket.native_handle());
    const bool isKnown = peer && admission_.admits(*peer);
    const uid_t user = isKnown ? peer->user : Visits::kStrangers;
    ++busy_;
    const Welcome welcome = visits_.enter(user);
    if (welcome == Welcome::kClosed) {
        endVisit(user);
        return;
    }
    asio::co_spawn(context_, visit(std::move(socket), peer, welcome),
                   [this, user](const std::exception_ptr&) { endVisit(user); });
}

void Server::endVisit(uid_t user)
{
    visits_.leave(user);
    endOne();
}

asio::awaitable<void> Server::untilStop()
{
    if (!isStopping_) {
        co_await stopping_.async_wait(kQuietly);
    }
}

/// Waits as long as a client that is sent away may take: the usual time, but only a moment after
/// the service has begun to stop.
asio::awaitable<void> Server::untilPatienceEnds()
{
    constexpr std::chrono::seconds kMoment{1};
    co_await (pause(limits_.send) || untilStop());
    if (isStopping_) {
        co_await pause(kMoment);
    }
}

/// Sends a client away with a status. The bytes that it still sends are read for a while: closing a
/// socket with unread bytes resets the connection, and the client could not read the status.
asio::awaitable<void> Server::turnAway(Socket& socket, cmdsvc::Status code)
{
    co_await (send(socket, serviceStatus(code), limits_.send) || untilPatienceEnds());
    asio::error_code ignored;
    socket.shutdown(Socket::shutdown_send, ignored);
    co_await (discard(socket) || untilPatienceEnds());
}

/// Receives the client's request. Returns nothing if there is none to run; the client has been sent
/// the reason, unless it sent nothing or was too slow.
asio::awaitable<std::optional<std::string>> Server::receive(Socket& socket, const Peer& peer)
{
    auto first = co_await (readToEnd(socket) || pause(limits_.send) || untilStop());
    if (first.index() == 2) {
        co_await turnAway(socket, cmdsvc::kServiceStopping);
        co_return std::nullopt;
    }
    if (first.index() == 1) {
        log(peer, "did not send a whole request in time");
        co_return std::nullopt;
    }
    std::string& request = std::get<0>(first);
    if (request.empty()) {
        co_return std::nullopt;
    }
    if (request.size() > VOK_REQUEST_SIZE) {
        log(peer, "sent more than 4096 bytes; the request was refused");
        co_await turnAway(socket, cmdsvc::kRequestTooLong);
        co_return std::nullopt;
    }
    co_return std::move(request);
}

/// Whether the client may use the service; a refusal is logged.
bool Server::isAdmitted(const std::optional<Peer>& peer) const
{
    if (peer && admission_.admits(*peer)) {
        return true;
    }
    log(peer, "may not use the service; the connection was refused");
    return false;
}

/// Whether the client may send this request; a refusal is logged.
bool Server::isPermitted(const std::string& request, const Peer& peer) const
{
    if (admission_.permits(peer, cmdsvc::findCommand(cmdsvc::codeOf(request)))) {
        return true;
    }
    log(peer, "may only look, not send " + describeCommand(request) + "; the request was refused");
    return false;
}

asio::awaitable<void> Server::visit(Socket socket, std::optional<Peer> peer, Welcome welcome)
{
    if (welcome == Welcome::kRefused) {
        log(peer, "has too many connections; one more was refused");
        co_await turnAway(socket, cmdsvc::kRequestNotStarted);
    } else if (!isAdmitted(peer)) {
        co_await turnAway(socket, cmdsvc::kNotAdmitted);
    } else {
        co_await serve(socket, *peer);
    }
}

asio::awaitable<void> Server::serve(Socket& socket, const Peer& peer)
{
    std::optional<std::string> request = co_await receive(socket, peer);
    if (!request) {
        co_return;
    }
    if (!isPermitted(*request, peer)) {
        co_await turnAway(socket, cmdsvc::kNotAdmitted);
        co_return;
    }
    if (!co_await awaitTurn(*request, peer)) {
        co_await turnAway(socket, cmdsvc::kServiceStopping);
        co_return;
    }
    if (hasLeft(socket)) {
        queue_.release();
        log(peer, "left before its turn; the request was not run");
        co_return;
    }
    Outcome outcome = co_await answer(std::move(*request), peer);
    // Other requests need not wait until a slow client has received its answer.
    queue_.release();
    const std::size_t sent = sendWith(outcome.reasons, socket.native_handle(), outcome.answer);
    co_await send(socket, outcome.answer.substr(sent), limits_.send);
}

/// Waits for a request's turn. A request that has to pause gives its turn to others meanwhile.
/// After the pause it waits for its next turn, and checks then whether it has to pause again.
/// @return false if the service stops
asio::awaitable<bool> Server::awaitTurn(const std::string& request, const Peer& peer)
{
    while (co_await queue_.acquire()) {
        const auto rest = pauses_.remaining(peer.user, Clock::now());
        if (!isPasswordCheck(request) || rest.count() == 0) {
            co_return true;
        }
        queue_.release();
        co_await (pause(rest) || untilStop());
    }
    co_return false;
}

/// Counts a request, runs it unless the gate refuses it, and logs it.
asio::awaitable<Outcome> Server::answer(std::string request, const Peer& peer)
{
    const auto start = Clock::now();
    lastNumber_ = (lastNumber_ < std::numeric_limits<int>::max()) ? lastNumber_ + 1 : 1;
    const int number = lastNumber_;
    Outcome outcome{Ending::kRefused, "", {}};
    if (std::optional<Refusal> refusal = examine(request)) {
        co_await countRefused(request, number);
        logRefusal(peer, number, refusal->parameter);
        outcome.answer = std::move(refusal->answer);
    } else {
        outcome = co_await runRequest(request, number);
    }
    if (isPasswordCheck(request)) {
        pauses_.judge(peer.user, outcome.answer, Clock::now());
    }
    const auto taken = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
    logRequest(peer, number, request, outcome, taken);
    times_.add(request, taken);
    co_return outcome;
}

/// Counts a request that is not run, in a child, because counting runs shell lines.
asio::awaitable<void> Server::countRefused(const std::string& request, int number)
{
    Child child([&] { usage_.count(request); }, number, path_);
    co_await child.finish(limits_.request);
}

asio::awaitable<Outcome> Server::runRequest(const std::string& request, int number)
{
    const bool isRepaired = upload_.repair();
    const std::optional<std::string> fresh = uploadedFile(request);
    if (!fresh) {
        co_return co_await runInChild(request, number);
    }
    if (!isRepaired || !upload_.begin(*fresh)) {
        co_await countRefused(request, number);
        co_return makeOutcome(Ending::kNotStarted);
    }
    co_return co_await runUpload(request, number);
}

/// Counts and runs a request in a child.
asio::awaitable<Outcome> Server::runInChild(const std::string& request, int number)
{
    const auto task = [&] {
        usage_.count(request);
        dispatch(request, number);
    };
    Child child(task, number, path_);
    Outcome outcome = co_await child.finish(limits_.request);
    emptyTracesAfter(request);
    co_return outcome;
}

/// The same for an upload whose note was written. If its process fails, the private file is
/// repaired.
asio::awaitable<Outcome> Server::runUpload(const std::string& request, int number)
{
    constexpr mode_t kPrivately = 077;
    const auto task = [&] {
        Upload::claim(Child::kKept);
        usage_.count(request);
        ::umask(kPrivately);
        dispatch(request, number);
    };
    Child child(task, number, path_, upload_.descriptor());
    upload_.handOver();
    Outcome outcome = co_await child.finish(limits_.request);
    if (outcome.ending == Ending::kFinished) {
        upload_.end();
    } else {
        static_cast<void>(upload_.repair());
    }
    // If mv failed, the module has written into the former file, which has kept its mode.
    closePrivateFile();
    co_return outcome;
}

asio::awaitable<void> Server::awaitStop()
{
    co_await stop_.async_wait(kQuietly);
    isStopping_ = true;
    stopping_.cancel();
    queue_.close();
    if (!keepsClients_) {
        acceptRemaining();
    }
    acceptor_.close();
    endServing();
}

void Server::endOne()
{
    --busy_;
    endServing();
}

/// Ends the loop if the service stops and every client has its answer.
void Server::endServing()
{
    if (isStopping_ && busy_ == 0) {
        context_.stop();
    }
}

} // namespace service
