// SPDX-License-Identifier: MIT
#include "service/listener.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

#include "tests/support/root.h"

namespace {

using service::Listener;

constexpr const char* kPath = "/tmp/socket";

/// What the next change of a file's owner is answered with, instead of being made: only the real
/// root may give files away.
struct OwnerChange {
    int error; ///< 0 for success
    std::string path = {};
    uid_t user = 0;
    gid_t group = 0;
    mode_t modeThen = 0;
};

OwnerChange* ownerChange = nullptr;

class SocketListener : public root::Test {
  protected:
    asio::io_context context;

    void TearDown() override
    {
        ownerChange = nullptr;
        root::Test::TearDown();
    }

    [[nodiscard]] std::string complaint(const std::string& path,
                                        std::optional<gid_t> group = std::nullopt)
    {
        try {
            const Listener listener(context, path, group);
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

TEST_F(SocketListener, ownSocketIsGivenToItsGroup)
{
    OwnerChange change{0};
    ownerChange = &change;
    const Listener listener(context, kPath, 4242);
    EXPECT_EQ(change.path, std::string(kPath) + "~");
    EXPECT_EQ(change.user, static_cast<uid_t>(-1)) << "its owner stays";
    EXPECT_EQ(change.group, 4242U);
    EXPECT_EQ(change.modeThen, 0660U) << "it was never open to others";
    EXPECT_TRUE(canConnect(kPath));
    EXPECT_EQ(std::filesystem::status(kPath).permissions(), std::filesystem::perms(0660));
}

TEST_F(SocketListener, ownSocketHasTheModeThatIsAskedFor)
{
    const Listener listener(context, kPath, std::nullopt, 0666);
    EXPECT_EQ(std::filesystem::status(kPath).permissions(), std::filesystem::perms(0666));
}

TEST_F(SocketListener, withoutAGroupTheOwnerIsLeftAlone)
{
    OwnerChange change{0};
    ownerChange = &change;
    const Listener listener(context, kPath);
    EXPECT_EQ(change.path, "");
}

TEST_F(SocketListener, socketThatCannotBeGivenAwayIsNotLeftBehind)
{
    OwnerChange change{EPERM};
    ownerChange = &change;
    EXPECT_EQ(complaint(kPath, 4242), "cannot listen on /tmp/socket: Operation not permitted");
    EXPECT_EQ(change.path, std::string(kPath) + "~");
    EXPECT_FALSE(root::exists(kPath));
}

TEST_F(SocketListener, socketIsClosedToOthersWhateverTheMask)
{
    const mode_t mask = ::umask(0);
    {
        const Listener listener(context, kPath);
        EXPECT_EQ(std::filesystem::status(kPath).permissions(), std::filesystem::perms(0660));
    }
    EXPECT_EQ(::umask(mask), 0U) << "the mask is as it was";
}

TEST_F(SocketListener, socketThatNobodyListensOnIsReplaced)
{
    {
        asio::local::stream_protocol::acceptor dead(context,
                                                    asio::local::stream_protocol::endpoint(kPath));
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

TEST_F(SocketListener, anothersSocketInItsPlaceIsNotRemoved)
{
    std::optional<Listener> former(std::in_place, context, kPath);
    std::filesystem::rename(kPath, "/tmp/former");
    const Listener follower(context, kPath);
    former.reset();
    EXPECT_TRUE(canConnect(kPath));
}

TEST_F(SocketListener, fileInItsPlaceIsLeftAlone)
{
    root::writeFile(kPath, "precious");
    EXPECT_EQ(complaint(kPath), "cannot listen on /tmp/socket: File exists");
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
        OwnerChange change{0};
        ownerChange = &change;
        Listener listener(context, "/tmp/other", 4242);
        EXPECT_EQ(change.path, "") << "who may use it is systemd's affair";
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

TEST_F(SocketListener, moreThanOneSocketIsNotTaken)
{
    ::setenv("LISTEN_FDS", "2", 1);
    ::setenv("LISTEN_PID", std::to_string(::getpid()).c_str(), 1);
    const Listener listener(context, kPath);
    EXPECT_TRUE(canConnect(kPath));
    ::unsetenv("LISTEN_FDS");
    ::unsetenv("LISTEN_PID");
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

extern "C" int chown(const char* path, uid_t user, gid_t group) noexcept
{
    if (ownerChange == nullptr) {
        return static_cast<int>(::syscall(SYS_fchownat, AT_FDCWD, path, user, group, 0));
    }
    struct stat status = {};
    ::stat(path, &status);
    *ownerChange = {ownerChange->error, path, user, group, status.st_mode & 07777U};
    errno = ownerChange->error;
    return (ownerChange->error == 0) ? 0 : -1;
}
