// SPDX-License-Identifier: MIT
#include "service/listener.h"

#include <cstdlib>
#include <stdexcept>
#include <string_view>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace service {
namespace {

using Protocol = asio::local::stream_protocol;

constexpr int kFirstHandedOver = 3;
constexpr mode_t kKeepOthersOut = 0117;

/// Whether systemd has started us with a socket for this very process.
bool isHandedOver()
{
    const char* process = std::getenv("LISTEN_PID");
    const char* count = std::getenv("LISTEN_FDS");
    return process != nullptr && count != nullptr && std::string_view(count) == "1" &&
           process == std::to_string(::getpid());
}

Acceptor takeOver(asio::io_context& context)
{
    // What we start in turn was not handed anything.
    ::unsetenv("LISTEN_PID");
    ::unsetenv("LISTEN_FDS");
    return Acceptor(context, Protocol(), kFirstHandedOver);
}

/// A socket file that nobody listens on any more stays behind when a service is killed.
void removeStale(asio::io_context& context, const std::string& path)
{
    asio::error_code error;
    Protocol::socket probe(context);
    probe.connect(Protocol::endpoint(path), error);
    if (!error) {
        throw std::runtime_error("another service listens on " + path +
                                 " already; stop it first, or use --socket");
    }
    struct stat status = {};
    if (::lstat(path.c_str(), &status) == 0 && S_ISSOCK(status.st_mode)) {
        ::unlink(path.c_str());
    }
}

Acceptor openOwn(asio::io_context& context, const std::string& path)
{
    if (path.size() >= sizeof(sockaddr_un::sun_path)) {
        throw std::runtime_error("the socket's path is too long: " + path);
    }
    removeStale(context, path);
    Acceptor acceptor(context);
    asio::error_code error;
    acceptor.open(Protocol(), error);
    const mode_t mask = ::umask(kKeepOthersOut);
    acceptor.bind(Protocol::endpoint(path), error);
    ::umask(mask);
    if (!error) {
        acceptor.listen(asio::socket_base::max_listen_connections, error);
    }
    if (error) {
        throw std::runtime_error("cannot listen on " + path + ": " + error.message());
    }
    return acceptor;
}

} // namespace

Listener::Listener(asio::io_context& context, std::string path)
    : ownPath_(isHandedOver() ? "" : std::move(path)),
      acceptor_(ownPath_.empty() ? takeOver(context) : openOwn(context, ownPath_))
{
}

Listener::~Listener()
{
    if (!ownPath_.empty()) {
        ::unlink(ownPath_.c_str());
    }
}

} // namespace service
