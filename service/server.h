// SPDX-License-Identifier: MIT
//
// server.h: takes requests, one a connection: the client sends the frame and shuts its sending side
// down, the service answers with the bytes of the answer and closes.
#pragma once

#include <asio/awaitable.hpp>
#include <asio/io_context.hpp>
#include <asio/signal_set.hpp>
#include <asio/steady_timer.hpp>
#include <chrono>
#include <optional>
#include <string>

#include "cmdsvc/protocol.h"
#include "config/configuration.h"
#include "service/child.h"
#include "service/listener.h"
#include "service/password_pauses.h"
#include "service/peer.h"
#include "service/request_queue.h"
#include "service/upload.h"
#include "service/usage.h"
#include "service/visits.h"

namespace service {

struct Limits {
    std::chrono::seconds send{10};    ///< for a client to send its request, and to take its answer
    std::chrono::seconds request{60}; ///< for a request to run
    std::chrono::seconds passwordPause{16}; ///< the longest after wrong passwords
};

class Server {
  public:
    /// @param stop       ends the serving; waited for since before anybody can connect
    /// @param admission  who may ask
    /// @param path       where requests find programs
    Server(asio::io_context& context, Listener& listener, asio::signal_set& stop,
           Admission admission, Limits limits, std::string path = config::kDefaultPath);

    /// Serves until it is told to stop. Then the request in hand is finished, all clients that wait
    /// or still send are told (0x53000006), and the usage is saved.
    void run();

  private:
    using Socket = asio::local::stream_protocol::socket;

    asio::awaitable<void> acceptClients();
    void acceptRemaining();
    void welcome(Socket socket);
    asio::awaitable<void> visit(Socket socket, std::optional<Peer> peer, Welcome welcome);
    asio::awaitable<void> serve(Socket& socket, const Peer& peer);
    asio::awaitable<std::optional<std::string>> receive(Socket& socket, const Peer& peer);
    asio::awaitable<void> turnAway(Socket& socket, cmdsvc::Status code);
    asio::awaitable<void> untilStop();
    asio::awaitable<void> untilPatienceEnds();
    asio::awaitable<bool> awaitTurn(const std::string& request, const Peer& peer);
    asio::awaitable<std::string> answer(std::string request, const Peer& peer);
    asio::awaitable<void> countRefused(const std::string& request, int number);
    asio::awaitable<Outcome> runRequest(const std::string& request, int number);
    asio::awaitable<Outcome> runInChild(const std::string& request, int number);
    asio::awaitable<Outcome> runUpload(const std::string& request, int number);
    [[nodiscard]] bool isPermitted(const std::string& request, const Peer& peer) const;
    [[nodiscard]] bool isAdmitted(const std::optional<Peer>& peer) const;
    asio::awaitable<void> awaitStop();
    void endVisit(uid_t user);
    void endOne();
    void endServing();

    asio::io_context& context_;
    Acceptor& acceptor_;
    bool keepsClients_;
    asio::signal_set& stop_;
    asio::steady_timer stopping_; ///< never ends; it is cancelled when the service stops
    Admission admission_;
    Limits limits_;
    std::string path_;
    int mostClients_; ///< as many as leave enough descriptors for requests
    Visits visits_;
    PasswordPauses pauses_;
    RequestQueue queue_;
    Usage usage_;
    Upload upload_;
    int lastNumber_ = 0;
    int busy_ = 0; ///< clients that are connected, and the one that accepts them
    bool isStopping_ = false;
};

} // namespace service
