// SPDX-License-Identifier: MIT
//
// socket_client.h: a client of the service that can behave as badly as it likes.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "tests/support/root.h"

namespace socketclient {

inline constexpr const char* kSocket = "/tmp/socket";

class Client {
  public:
    Client() : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::string(kSocket).copy(address.sun_path, sizeof address.sun_path - 1);
        isConnected_ =
            ::connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    }
    ~Client() { ::close(socket_); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    [[nodiscard]] bool isConnected() const { return isConnected_; }

    void send(std::string_view bytes) const
    {
        while (!bytes.empty()) {
            const ssize_t sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
            if (sent <= 0) {
                return;
            }
            bytes.remove_prefix(static_cast<std::size_t>(sent));
        }
    }

    void finishSending() const { ::shutdown(socket_, SHUT_WR); }

    /// Everything up to the service's close. What a connection that was reset has given before does
    /// not count.
    [[nodiscard]] std::string receive() const
    {
        std::string bytes;
        std::array<char, 4096> piece{};
        ssize_t got = 0;
        while ((got = ::recv(socket_, piece.data(), piece.size(), 0)) > 0) {
            bytes.append(piece.data(), static_cast<std::size_t>(got));
        }
        return (got == 0) ? bytes : "the connection was reset";
    }

  private:
    int socket_;
    bool isConnected_ = false;
};

/// One request, and the whole answer.
[[nodiscard]] inline std::string exchange(std::string_view request)
{
    const Client client;
    client.send(request);
    client.finishSending();
    return client.receive();
}

/// Waits until a service serves.
inline void awaitService()
{
    for (int tries = 0; tries < 500; ++tries) {
        const Client probe;
        if (probe.isConnected()) {
            // An empty request is none; its end tells that the service has begun to serve.
            probe.finishSending();
            static_cast<void>(probe.receive());
            return;
        }
        ::usleep(10000);
    }
}

/// What a client gets where there is no answer of the command's.
[[nodiscard]] inline std::string serviceStatus(std::uint32_t code)
{
    return "serv " + root::le32(code) + std::string(1, '\0');
}

} // namespace socketclient
