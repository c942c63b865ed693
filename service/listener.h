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

/// The socket that the service listens on: one that systemd has handed over (LISTEN_FDS), or its
/// own at a path. The service's own socket is removed with this object, unless another file is at
/// its path by then.
class Listener {
  public:
    /// Throws std::runtime_error if it cannot listen; the message says what to do about it.
    /// @param group  of the service's own socket
    /// @param mode   of the service's own socket
    Listener(asio::io_context& context, std::string path, std::optional<gid_t> group = std::nullopt,
             mode_t mode = 0660);
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    [[nodiscard]] Acceptor& acceptor() { return acceptor_; }

    /// Whether clients that are not yet accepted wait at the socket for the next service.
    [[nodiscard]] bool keepsClients() const { return ownPath_.empty(); }

  private:
    [[nodiscard]] bool isOwnSocketThere() const;

    std::string ownPath_; ///< empty if the socket is systemd's
    Acceptor acceptor_;
    struct stat own_ = {}; ///< the file of the service's own socket
    int folder_ = -1;  ///< that file's folder: its path may lead elsewhere after /tmp is replaced
    std::string name_; ///< that file's name in the folder
};

} // namespace service
