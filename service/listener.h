// SPDX-License-Identifier: MIT
#pragma once

#include <asio/io_context.hpp>
#include <asio/local/stream_protocol.hpp>
#include <string>

namespace service {

using Acceptor = asio::local::stream_protocol::acceptor;

/// The socket that requests come through: the one that systemd has handed over (LISTEN_FDS), or one
/// of our own at a path. Ours is open to its owner and group, and is removed with this object.
class Listener {
  public:
    /// Throws std::runtime_error with what to do about it where the socket cannot be had.
    Listener(asio::io_context& context, std::string path);
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    [[nodiscard]] Acceptor& acceptor() { return acceptor_; }

  private:
    std::string ownPath_; ///< empty where the socket is systemd's
    Acceptor acceptor_;
};

} // namespace service
