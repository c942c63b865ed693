// SPDX-License-Identifier: MIT
#include "client/connection.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/root.h"
#include "tests/support/scripted_service.h"

namespace {

using client::Connection;
using client::Reply;
using client::sendRequest;

constexpr const char* kSocket = "/tmp/socket";

/// Whom the client seems to run as; nothing for the test's own user, which may be root.
std::optional<uid_t> pretended;
constexpr uid_t kOneself = 1000;

/// A service in a child process that takes one request and does with it as it is told.
class Connected : public root::UntracedTest {
  protected:
    pid_t service = -1;

    template <class Service> void serve(Service behave)
    {
        const int listener = root::listenAt(kSocket);
        service = ::fork();
        if (service == 0) {
            const int socket = ::accept(listener, nullptr, nullptr);
            behave(socket);
            ::_exit(0);
        }
        ::close(listener);
    }

    void TearDown() override
    {
        if (service > 0) {
            ::kill(service, SIGKILL);
            ::waitpid(service, nullptr, 0);
        }
        root::UntracedTest::TearDown();
    }

    static Connection connection(unsigned timeout = 20)
    {
        return {.socket = kSocket, .timeout = timeout};
    }
};

TEST_F(Connected, frameArrivesWholeAndTheAnswerComesBackWhole)
{
    const std::string frame(4096, '\xE9');
    const std::string answer = std::string(100000, 'a') + std::string(3, '\0');
    serve([&](int socket) {
        const std::string expected = root::receiveAll(socket) == frame ? answer : "wrong";
        [[maybe_unused]] const ssize_t sent = ::write(socket, expected.data(), expected.size());
    });
    const Reply reply = sendRequest(connection(), frame);
    EXPECT_EQ(reply.code, client::kGood);
    EXPECT_EQ(reply.bytes, answer);
}

TEST_F(Connected, answerThatIsCutOffIsNone)
{
    serve([](int socket) {
        // It ends with the request unread, as one that was killed.
        pollfd connection = {socket, POLLRDHUP, 0};
        ::poll(&connection, 1, -1);
    });
    const Reply reply = sendRequest(connection(), "gubs " + root::le32(0) + "\n");
    EXPECT_EQ(reply.code, client::kUnreachable);
    EXPECT_EQ(reply.complaint, "cannot reach the service at /tmp/socket: Connection reset by peer. "
                               "Is vokserve running?");
}

TEST_F(Connected, emptyAnswerIsGood)
{
    serve([](int socket) { root::receiveAll(socket); });
    const Reply reply = sendRequest(connection(), "gubs " + root::le32(0) + "\n");
    EXPECT_EQ(reply.code, client::kGood);
    EXPECT_EQ(reply.bytes, "");
}

// ---- How long an answer may be ----------------------------------------------------------------

TEST_F(Connected, answerOfTheLongestSizeIsTaken)
{
    for (const std::size_t size : {1U, 20U, 16383U, 16384U, 16385U, 100000U}) {
        const std::string answer(size, 'a');
        serve([&](int socket) {
            root::receiveAll(socket);
            [[maybe_unused]] const ssize_t sent = ::write(socket, answer.data(), answer.size());
        });
        const Reply reply = sendRequest(connection(), "x", size);
        EXPECT_EQ(reply.code, client::kGood) << size;
        EXPECT_EQ(reply.bytes, answer);
        EXPECT_EQ(reply.complaint, "");
        std::filesystem::remove(kSocket);
    }
}

TEST_F(Connected, longerAnswerIsNotTaken)
{
    for (const std::size_t size : {0U, 20U, 16384U}) {
        serve([&](int socket) {
            root::receiveAll(socket);
            const std::string answer(size + 1, 'a');
            [[maybe_unused]] const ssize_t sent = ::write(socket, answer.data(), answer.size());
            // There is more to come, but nobody waits for it.
            ::pause();
        });
        const Reply reply = sendRequest(connection(), "x", size);
        EXPECT_EQ(reply.code, client::kUnreadableAnswer);
        EXPECT_EQ(reply.bytes, "");
        EXPECT_EQ(reply.complaint, "the answer is longer than " + std::to_string(size) +
                                       " bytes, more than a good answer can have");
        ::kill(service, SIGKILL);
        std::filesystem::remove(kSocket);
    }
}

TEST_F(Connected, answerWithoutAnEndDoesNotFillTheMemory)
{
    serve([](int socket) {
        root::receiveAll(socket);
        const std::string piece(65536, 'a');
        while (::write(socket, piece.data(), piece.size()) > 0) {
        }
    });
    const Reply reply = sendRequest(connection(), "x");
    EXPECT_EQ(reply.code, client::kUnreadableAnswer);
    EXPECT_EQ(reply.complaint,
              "the answer is longer than 16777216 bytes, more than a good answer can have");
}

// ---- Who serves -------------------------------------------------------------------------------

/// Has the kernel tell of a service that another user runs, whom the test names.
class ServedBy : public Connected {
  protected:
    void SetUp() override
    {
        Connected::SetUp();
        pretended = kOneself;
    }

    void TearDown() override
    {
        pretended.reset();
        Connected::TearDown();
    }

    void answerAs(const std::string& credentials)
    {
        root::writeFile("/stubs/peer", credentials);
        serve([](int socket) {
            const std::string frame = root::receiveAll(socket);
            [[maybe_unused]] const ssize_t sent = ::write(socket, frame.data(), frame.size());
        });
    }

    void expectRefused(const std::string& credentials, const std::string& who)
    {
        answerAs(credentials);
        const Reply reply = sendRequest(connection(), "secret");
        EXPECT_EQ(reply.code, client::kNotPermitted);
        EXPECT_EQ(reply.bytes, "") << "nothing is sent";
        EXPECT_EQ(reply.complaint, "the service at /tmp/socket is run by " + who +
                                       ", neither by root nor by you, so nothing was sent. To use "
                                       "it anyway: --any-server");
    }
};

TEST_F(ServedBy, rootIsAsked)
{
    answerAs("credentials 1 0 0\n");
    EXPECT_EQ(sendRequest(connection(), "secret").bytes, "secret");
}

TEST_F(ServedBy, oneselfIsAsked)
{
    answerAs("credentials 4711 " + std::to_string(kOneself) + " 100\n");
    EXPECT_EQ(sendRequest(connection(), "secret").bytes, "secret");
}

TEST_F(ServedBy, anotherUserIsNotAsked)
{
    expectRefused("credentials 4711 4242 0\n", "user 4242");
}

TEST_F(ServedBy, nobodyKnowsWhoIsNotAsked)
{
    expectRefused("nothing\n", "an unknown user");
}

TEST_F(ServedBy, anotherUserIsAskedIfThatIsWanted)
{
    answerAs("credentials 4711 4242 0\n");
    Connection any = connection();
    any.anyServer = true;
    EXPECT_EQ(sendRequest(any, "secret").bytes, "secret");
}

// ---- No answer --------------------------------------------------------------------------------

TEST_F(Connected, settingsSayWhereTheServiceIsAndOptionsWinOverThem)
{
    root::writeFile("/tmp/settings", "[service]\nsocket = /tmp/elsewhere\n[client]\ntimeout = 1\n");
    EXPECT_EQ(sendRequest({.socket = {}, .timeout = {}, .file = "/tmp/settings"}, "x").complaint,
              "cannot reach the service at /tmp/elsewhere: No such file or directory. "
              "Is vokserve running?");
    serve([](int socket) {
        root::receiveAll(socket);
        ::pause();
    });
    EXPECT_EQ(
        sendRequest({.socket = kSocket, .timeout = {}, .file = "/tmp/settings"}, "x").complaint,
        "the service has not answered within 1 second. It may be busy; try again, or raise "
        "--timeout.");
}

TEST_F(Connected, settingsThatAreNotUnderstoodAreTold)
{
    root::writeFile("/tmp/settings", "[client]\ntimeout = soon\n");
    EXPECT_THROW(static_cast<void>(sendRequest({.socket = kSocket, .file = "/tmp/settings"}, "x")),
                 config::BadConfiguration);
}

TEST_F(Connected, nobodyThereIsUnreachable)
{
    const Reply reply = sendRequest(connection(), "x");
    EXPECT_EQ(reply.code, client::kUnreachable);
    EXPECT_EQ(reply.complaint,
              "cannot reach the service at /tmp/socket: No such file or directory. "
              "Is vokserve running?");
    root::writeFile(kSocket, "");
    EXPECT_EQ(sendRequest(connection(), "x").code, client::kUnreachable);
}

TEST_F(Connected, closedSocketIsNotPermitted)
{
    serve([](int socket) { root::receiveAll(socket); });
    std::filesystem::permissions(kSocket, std::filesystem::perms(0));
    const Reply reply = sendRequest(connection(), "x");
    EXPECT_EQ(reply.code, client::kNotPermitted);
    EXPECT_EQ(reply.complaint, "cannot reach the service at /tmp/socket: Permission denied. Ask "
                               "root to add you to the group vokcontrol, or try again as root.");
}

TEST_F(Connected, serviceThatDoesNotAnswerIsWaitedForSoLong)
{
    serve([](int socket) {
        root::receiveAll(socket);
        ::pause();
    });
    const auto start = std::chrono::steady_clock::now();
    const Reply reply = sendRequest(connection(1), "x");
    const auto taken = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(reply.code, client::kNoAnswer);
    EXPECT_EQ(reply.complaint, "the service has not answered within 1 second. It may be busy; try "
                               "again, or raise --timeout.");
    EXPECT_GE(taken, std::chrono::milliseconds(900));
    EXPECT_LT(taken, std::chrono::seconds(10));
}

} // namespace

/// Stands before the C library's.
extern "C" uid_t geteuid() noexcept
{
    return pretended.value_or(static_cast<uid_t>(::syscall(SYS_geteuid)));
}
