// SPDX-License-Identifier: MIT
#pragma once

#include <asio/io_context.hpp>
#include <asio/local/stream_protocol.hpp>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <sys/types.h>

namespace service {

using Acceptor = asio::local::stream_protocol::acceptor;

/// The socket that requests come through: the one that systemd has handed over (LISTEN_FDS), or one
/// of our own at a path. Ours is removed with this object, unless another socket has taken its
/// place.
class Listener {
  public:
    /// Throws std::runtime_error with what to do about it where the socket cannot be had.
    /// @param group  the group that a socket of our own is given to
    /// @param mode   of a socket of our own
    Listener(asio::io_context& context, std::string path, std::optional<gid_t> group = std::nullopt,
             mode_t mode = 0660);
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    [[nodiscard]] Acceptor& acceptor() { return acceptor_; }

    /// Whether clients that nobody has accepted stay at the socket for the next service.
    [[nodiscard]] bool keepsClients() const { return ownPath_.empty(); }

  private:
    [[nodiscard]] bool isOwnSocketThere() const;

    std::string ownPath_; ///< empty where the socket is systemd's
    Acceptor acceptor_;
    struct stat own_ = {}; ///< our own socket's file
    int folder_ = -1;      ///< of our own socket: its path may lead elsewhere when /tmp is replaced
    std::string name_;     ///< in that folder
};

} // namespace service
