// SPDX-License-Identifier: MIT
//
// server.h: serves one request per connection: the client sends the request and shuts its sending
// side down; the service sends the answer and closes the connection.
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
#include "service/request_times.h"
#include "service/upload.h"
#include "service/usage.h"
#include "service/visits.h"

namespace service {

struct Limits {
    std::chrono::seconds send{10};          ///< to send a request, and again to receive the answer
    std::chrono::seconds request{60};       ///< for a request to run
    std::chrono::seconds passwordPause{16}; ///< the longest pause after wrong passwords
};

class Server {
  public:
    /// @param stop       the signals that end run(); to be made before the listener
    /// @param admission  who may send which commands
    /// @param path       the folders in which requests find programs
    Server(asio::io_context& context, Listener& listener, asio::signal_set& stop,
           Admission admission, Limits limits, std::string path = config::kDefaultPath);

    /// Serves until a signal of stop. Then it finishes the request that runs, answers all clients
    /// that wait or still send with 0x53000006, and saves the usage.
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
    asio::awaitable<Outcome> answer(std::string request, const Peer& peer);
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
    int mostClients_; ///< limited, so that enough descriptors are left for requests
    Visits visits_;
    PasswordPauses pauses_;
    RequestQueue queue_;
    Usage usage_;
    RequestTimes times_;
    Upload upload_;
    int lastNumber_ = 0;
    int busy_ = 0; ///< the connected clients, and one for acceptClients()
    bool isStopping_ = false;
};

} // namespace service
