// SPDX-License-Identifier: MIT
#include "service/listener.h"

#include <cstdlib>
#include <filesystem>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "tests/support/root.h"

namespace {

using service::Listener;

constexpr const char* kPath = "/tmp/socket";

class SocketListener : public root::Test {
  protected:
    asio::io_context context;

    [[nodiscard]] std::string complaint(const std::string& path)
    {
        try {
            const Listener listener(context, path);
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "";
    }

    bool canConnect(const std::string& path)
    {
        asio::error_code error;
        asio::local::stream_protocol::socket socket(context);
        socket.connect(asio::local::stream_protocol::endpoint(path), error);
        return !error;
    }
};

TEST_F(SocketListener, ownSocketIsForOwnerAndGroupAndGoesWithTheListener)
{
    {
        const Listener listener(context, kPath);
        EXPECT_TRUE(canConnect(kPath));
        EXPECT_EQ(std::filesystem::status(kPath).permissions(), std::filesystem::perms(0660));
    }
    EXPECT_FALSE(root::exists(kPath));
}

TEST_F(SocketListener, socketThatNobodyListensOnIsReplaced)
{
    {
        asio::local::stream_protocol::acceptor dead(
            context, asio::local::stream_protocol::endpoint(kPath));
    }
    ASSERT_TRUE(root::exists(kPath));
    const Listener listener(context, kPath);
    EXPECT_TRUE(canConnect(kPath));
}

TEST_F(SocketListener, anotherServiceIsLeftAlone)
{
    const Listener first(context, kPath);
    EXPECT_EQ(complaint(kPath), "another service listens on /tmp/socket already; stop it first, or "
                                "use --socket");
    EXPECT_TRUE(canConnect(kPath));
}

TEST_F(SocketListener, fileInItsPlaceIsLeftAlone)
{
    root::writeFile(kPath, "precious");
    EXPECT_EQ(complaint(kPath), "cannot listen on /tmp/socket: Address already in use");
    EXPECT_EQ(root::readFile(kPath), "precious");
}

TEST_F(SocketListener, missingFolderAndLongPathAreSaid)
{
    EXPECT_EQ(complaint("/missing/socket"),
              "cannot listen on /missing/socket: No such file or directory");
    const std::string path = "/tmp/" + std::string(200, 's');
    EXPECT_EQ(complaint(path), "the socket's path is too long: " + path);
}

TEST_F(SocketListener, handedOverSocketIsUsedAndStays)
{
    const int handed = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::string(kPath).copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(handed, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(::listen(handed, 5), 0);
    // The third descriptor may be somebody's already; it gets its own place back.
    const int kept = ::dup(3);
    ASSERT_EQ(::dup2(handed, 3), 3);
    ::setenv("LISTEN_FDS", "1", 1);
    ::setenv("LISTEN_PID", std::to_string(::getpid()).c_str(), 1);
    {
        Listener listener(context, "/tmp/other");
        EXPECT_EQ(std::getenv("LISTEN_FDS"), nullptr) << "children were not handed anything";
        EXPECT_TRUE(canConnect(kPath));
        EXPECT_FALSE(root::exists("/tmp/other"));
        EXPECT_EQ(listener.acceptor().local_endpoint().path(), kPath);
    }
    EXPECT_TRUE(root::exists(kPath)) << "the socket is systemd's to remove";
    if (kept >= 0) {
        ::dup2(kept, 3);
        ::close(kept);
    }
    ::close(handed);
}

TEST_F(SocketListener, socketForAnotherProcessIsNotTaken)
{
    ::setenv("LISTEN_FDS", "1", 1);
    ::setenv("LISTEN_PID", "1", 1);
    const Listener listener(context, kPath);
    EXPECT_TRUE(canConnect(kPath));
    ::unsetenv("LISTEN_FDS");
    ::unsetenv("LISTEN_PID");
}

} // namespace
