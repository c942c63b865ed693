// SPDX-License-Identifier: MIT
#include "service/listener.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
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
constexpr mode_t kAll = 0777;

/// Whether systemd has started this process with one socket.
bool isHandedOver()
{
    const char* process = std::getenv("LISTEN_PID");
    const char* count = std::getenv("LISTEN_FDS");
    return process != nullptr && count != nullptr && std::string_view(count) == "1" &&
           process == std::to_string(::getpid());
}

Acceptor takeOver(asio::io_context& context)
{
    // The processes that the service starts must not take these for theirs.
    ::unsetenv("LISTEN_PID");
    ::unsetenv("LISTEN_FDS");
    ::fcntl(kFirstHandedOver, F_SETFD, FD_CLOEXEC);
    return Acceptor(context, Protocol(), kFirstHandedOver);
}

/// Removes the socket file that a killed service has left. Throws if something listens on it.
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

/// Gives a socket that listens already its group and its path. No client sees it before.
void publish(const std::string& unready, const std::string& path, std::optional<gid_t> group)
{
    constexpr auto kSameUser = static_cast<uid_t>(-1);
    const bool isGiven = !group || ::chown(unready.c_str(), kSameUser, *group) == 0;
    // Not rename(): that would replace a file that is not a socket.
    const bool isPlaced = isGiven && ::link(unready.c_str(), path.c_str()) == 0;
    const asio::error_code error(errno, asio::system_category());
    ::unlink(unready.c_str());
    if (!isPlaced) {
        throw std::runtime_error("cannot listen on " + path + ": " + error.message());
    }
}

Acceptor openOwn(asio::io_context& context, const std::string& path, std::optional<gid_t> group,
                 mode_t mode)
{
    const std::string unready = path + "~";
    if (unready.size() >= sizeof(sockaddr_un::sun_path)) {
        throw std::runtime_error("the socket's path is too long: " + path);
    }
    removeStale(context, path);
    ::unlink(unready.c_str());
    Acceptor acceptor(context);
    asio::error_code error;
    acceptor.open(Protocol(), error);
    // A process that outlives the service must not hold the socket, or it would seem to be served.
    ::fcntl(acceptor.native_handle(), F_SETFD, FD_CLOEXEC);
    const mode_t mask = ::umask(kAll & ~mode);
    acceptor.bind(Protocol::endpoint(unready), error);
    ::umask(mask);
    if (!error) {
        acceptor.listen(asio::socket_base::max_listen_connections, error);
    }
    if (error) {
        throw std::runtime_error("cannot listen on " + path + ": " + error.message());
    }
    publish(unready, path, group);
    return acceptor;
}

} // namespace

Listener::Listener(asio::io_context& context, std::string path, std::optional<gid_t> group,
                   mode_t mode)
    : ownPath_(isHandedOver() ? "" : std::move(path)),
      acceptor_(ownPath_.empty() ? takeOver(context) : openOwn(context, ownPath_, group, mode))
{
    if (!ownPath_.empty()) {
        const std::filesystem::path own = std::filesystem::absolute(ownPath_);
        folder_ = ::open(own.parent_path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
        name_ = own.filename();
        ::fstatat(folder_, name_.c_str(), &own_, AT_SYMLINK_NOFOLLOW);
    }
}

bool Listener::isOwnSocketThere() const
{
    struct stat now = {};
    return ::fstatat(folder_, name_.c_str(), &now, AT_SYMLINK_NOFOLLOW) == 0 &&
           now.st_dev == own_.st_dev && now.st_ino == own_.st_ino;
}

Listener::~Listener()
{
    if (folder_ >= 0) {
        if (isOwnSocketThere()) {
            ::unlinkat(folder_, name_.c_str(), 0);
        }
        ::close(folder_);
    }
}

} // namespace service
