// SPDX-License-Identifier: MIT
//
// vokserve as its clients meet it, well-behaved or not.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <sstream>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "tests/support/request.h"
#include "tests/support/root.h"
#include "vokcontrol.h"

namespace {

using Clock = std::chrono::steady_clock;
using request::frame;
using root::le32;
using std::chrono::seconds;

constexpr const char* kSocket = "/tmp/socket";

class Client {
  public:
    Client() : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::string(kSocket).copy(address.sun_path, sizeof address.sun_path - 1);
        isConnected_ = ::connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
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

    /// Everything up to the service's close.
    [[nodiscard]] std::string receive() const
    {
        std::string bytes;
        std::array<char, 4096> piece{};
        ssize_t got = 0;
        while ((got = ::recv(socket_, piece.data(), piece.size(), 0)) > 0) {
            bytes.append(piece.data(), static_cast<std::size_t>(got));
        }
        return bytes;
    }

  private:
    int socket_;
    bool isConnected_ = false;
};

std::string exchange(std::string_view request)
{
    const Client client;
    client.send(request);
    client.finishSending();
    return client.receive();
}

class Server : public root::UntracedTest {
  protected:
    std::optional<root::Program> service;

    void start(std::vector<std::string> options = {})
    {
        options.insert(options.begin(), {root::built("vokserve"), "--socket", kSocket});
        service.emplace(options);
        for (int tries = 0; tries < 500 && !Client().isConnected(); ++tries) {
            ::usleep(10000);
        }
    }

    /// Ends the service.
    /// @return its log lines about requests, without the times that they took
    std::vector<std::string> stop()
    {
        ::kill(service->pid(), SIGTERM);
        const root::Ended ended = service->wait();
        service.reset();
        EXPECT_EQ(ended.exitCode, 0) << ended.errors;
        EXPECT_FALSE(root::exists(kSocket));
        std::istringstream stream(ended.errors);
        std::vector<std::string> lines;
        for (std::string line; std::getline(stream, line);) {
            const std::size_t at = line.find(" ms=");
            if (at != std::string::npos) {
                const std::size_t end = std::min(line.find(' ', at + 1), line.size());
                lines.push_back(line.substr(0, at) + line.substr(end));
            } else if (line != "vokserve: ready" && line != "vokserve: stopped") {
                lines.push_back(line);
            }
        }
        return lines;
    }

    void TearDown() override
    {
        if (service) {
            ::kill(service->pid(), SIGKILL);
            static_cast<void>(service->wait());
        }
        root::UntracedTest::TearDown();
    }

    static std::string usageOf(std::size_t slot)
    {
        return root::readFile(VOK_USAGE_FILE).substr(8 * (slot - 1) + 4, 4);
    }
};

TEST_F(Server, answersOneRequestAConnection)
{
    root::stub("php", "echo '<username>anna</username>' >\"$3\"");
    start();
    EXPECT_EQ(exchange(frame("lstu", 0)), "lsut " + le32(1) + "\nanna\n");
    EXPECT_EQ(exchange(frame("lstu", 1)), le32(0xFF000003));
    EXPECT_EQ(exchange(frame("gubs", 0)), "");
    EXPECT_EQ(exchange(frame("none", 0)), "");
    EXPECT_EQ(stop(), (std::vector<std::string>{
                          "vokserve: 1 lstu count=0 answer=15", "vokserve: 2 lstu count=1 answer=4",
                          "vokserve: 3 gubs count=0 answer=0", "vokserve: 4 none count=0 answer=0"}));
    EXPECT_EQ(usageOf(3), le32(2));
    EXPECT_EQ(usageOf(21), le32(2)) << "gubs and none";
    EXPECT_EQ(root::list("/tmp"), std::vector<std::string>{"dbg_vokcontrol.txt"});
}

TEST_F(Server, requestInPiecesIsPutTogether)
{
    start();
    const Client client;
    for (const char c : frame("rtov", 7)) {
        client.send({&c, 1});
        ::usleep(2000);
    }
    client.finishSending();
    EXPECT_EQ(client.receive(), le32(0xFF000003));
}

TEST_F(Server, fourThousandNinetySixBytesPassAndOneMoreIsRefused)
{
    start();
    const std::string largest = "rtov " + le32(7) + std::string(4087, '\n');
    EXPECT_EQ(exchange(largest), le32(0xFF000003));
    EXPECT_EQ(exchange(largest + "x"), "");
    EXPECT_EQ(exchange(largest + std::string(100000, 'x')), "");
    EXPECT_EQ(stop(),
              (std::vector<std::string>{
                  "vokserve: 1 rtov count=7 answer=4",
                  "vokserve: a client sent more than 4096 bytes; they were refused",
                  "vokserve: a client sent more than 4096 bytes; they were refused"}));
}

TEST_F(Server, emptyRequestIsNone)
{
    start();
    EXPECT_EQ(exchange(""), "");
    EXPECT_EQ(stop(), std::vector<std::string>{});
}

TEST_F(Server, halfAFrameIsARequestLikeAnyOther)
{
    start();
    EXPECT_EQ(exchange("rt"), "");
    EXPECT_EQ(exchange("rtov"), le32(0xFF000003));
}

TEST_F(Server, silentAndSlowClientsHoldUpNobodyAndAreCutOff)
{
    start({"--deadline", "1"});
    const auto begin = Clock::now();
    const Client silent;
    const Client half;
    half.send("rtov");
    EXPECT_EQ(exchange(frame("rtov", 7)), le32(0xFF000003));
    EXPECT_LT(Clock::now() - begin, std::chrono::milliseconds(900));
    EXPECT_EQ(silent.receive(), "");
    EXPECT_EQ(half.receive(), "");
    const auto taken = Clock::now() - begin;
    EXPECT_GE(taken, std::chrono::milliseconds(900));
    EXPECT_LT(taken, seconds(5));
    EXPECT_EQ(stop(), (std::vector<std::string>{"vokserve: 1 rtov count=7 answer=4",
                                                "vokserve: a client sent no whole request in time",
                                                "vokserve: a client sent no whole request in time"}));
}

TEST_F(Server, clientThatLeavesBeforeItsAnswerHarmsNobody)
{
    root::stub("php", "sleep 0.2; : >\"$3\"");
    start();
    {
        const Client client;
        client.send(frame("lstu", 0));
        client.finishSending();
    }
    EXPECT_EQ(exchange(frame("rtov", 7)), le32(0xFF000003));
    EXPECT_EQ(stop().size(), 2U) << "its request was run all the same";
}

TEST_F(Server, oneRequestRunsAtATimeInTheOrderOfTheirArrival)
{
    root::stub("php", "[ ! -e /stubs/running ] || echo overlap >>/stubs/overlaps; : >/stubs/running;"
                      " sleep 0.05; rm /stubs/running; : >\"$3\"");
    start();
    std::vector<std::unique_ptr<Client>> clients;
    for (int i = 0; i < 10; ++i) {
        clients.push_back(std::make_unique<Client>());
        clients.back()->send(frame("lstu", 0));
        clients.back()->finishSending();
    }
    for (const auto& client : clients) {
        EXPECT_EQ(client->receive(), "lsut " + le32(0) + "\n");
    }
    EXPECT_FALSE(root::exists("/stubs/overlaps"));
    EXPECT_EQ(stop().size(), 10U);
    EXPECT_EQ(usageOf(3), le32(10));
}

TEST_F(Server, thousandConnectionsAtOnceAreAllAnswered)
{
    rlimit limit = {};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    ::setrlimit(RLIMIT_NOFILE, &limit);
    constexpr std::size_t kClients = 1000;
    start({"--deadline", "60"});
    std::vector<std::unique_ptr<Client>> clients;
    for (std::size_t i = 0; i < kClients; ++i) {
        clients.push_back(std::make_unique<Client>());
        ASSERT_TRUE(clients.back()->isConnected()) << i;
    }
    for (const auto& client : clients) {
        client->send(frame("rtov", 7));
        client->finishSending();
    }
    for (const auto& client : clients) {
        ASSERT_EQ(client->receive(), le32(0xFF000003));
    }
    EXPECT_EQ(stop().size(), kClients);
    EXPECT_EQ(usageOf(20), le32(kClients));
}

TEST_F(Server, crashOfAHandlerIsItsOwnAffair)
{
    root::stub("php", "read -r pid comm state ppid group rest </proc/self/stat; kill -SEGV $group");
    start();
    EXPECT_EQ(exchange(frame("lstu", 0)), "");
    root::stub("php", ": >\"$3\"");
    EXPECT_EQ(exchange(frame("lstu", 0)), "lsut " + le32(0) + "\n");
    EXPECT_EQ(stop().front(), "vokserve: 1 lstu count=0 answer=0 (its process failed)");
}

TEST_F(Server, hangOfAHandlerEndsAndTheNextRequestIsServed)
{
    root::stub("php", "sleep 1000");
    start({"--timeout", "1"});
    const Client hanging;
    hanging.send(frame("lstu", 0));
    hanging.finishSending();
    EXPECT_EQ(exchange(frame("rtov", 7)), le32(0xFF000003));
    EXPECT_EQ(hanging.receive(), "");
    EXPECT_EQ(stop(), (std::vector<std::string>{
                          "vokserve: 1 lstu count=0 answer=0 (took too long and was ended)",
                          "vokserve: 2 rtov count=7 answer=4"}));
}

TEST_F(Server, fullDiskPassesAndTheNextRequestIsServed)
{
    start();
    root::fillDisk("/tmp");
    EXPECT_EQ(exchange(frame("rtov", 7)), "");
    std::filesystem::remove("/tmp/filler");
    EXPECT_EQ(exchange(frame("rtov", 7)), le32(0xFF000003));
}

TEST_F(Server, serviceThatARequestStartsDoesNotHoldItsConnection)
{
    root::stub("ps", "echo grep pelstatus");
    root::stub("startapp", "sleep 20 &");
    start();
    const auto begin = Clock::now();
    EXPECT_EQ(exchange(frame("sgss", 0)), le32(0));
    EXPECT_LT(Clock::now() - begin, seconds(10));
}

TEST_F(Server, endFinishesTheRequestInHandAndDropsTheOthers)
{
    root::stub("php", ": >/stubs/running; sleep 0.5; : >\"$3\"");
    start();
    const Client first;
    first.send(frame("lstu", 0));
    first.finishSending();
    while (!root::exists("/stubs/running")) {
        ::usleep(1000);
    }
    const Client second;
    second.send(frame("rtov", 7));
    second.finishSending();
    ::usleep(100000);
    EXPECT_EQ(stop(), std::vector<std::string>{"vokserve: 1 lstu count=0 answer=10"});
    EXPECT_EQ(first.receive(), "lsut " + le32(0) + "\n");
    EXPECT_EQ(second.receive(), "");
    EXPECT_EQ(usageOf(3), le32(1));
}

TEST_F(Server, countsGoOnAfterARestart)
{
    start();
    exchange(frame("rtov", 2));
    stop();
    start();
    exchange(frame("rtov", 2));
    stop();
    EXPECT_EQ(usageOf(20), le32(2));
}

TEST_F(Server, socketOfAKilledServiceIsTakenOver)
{
    start();
    ::kill(service->pid(), SIGKILL);
    static_cast<void>(service->wait());
    ASSERT_TRUE(root::exists(kSocket));
    start();
    EXPECT_EQ(exchange(frame("rtov", 7)), le32(0xFF000003));
    stop();
}

TEST_F(Server, secondServiceIsRefused)
{
    start();
    const root::Ended ended = root::run({root::built("vokserve"), "--socket", kSocket});
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_EQ(ended.errors, "vokserve: another service listens on /tmp/socket already; stop it "
                            "first, or use --socket\n");
    EXPECT_EQ(exchange(frame("rtov", 7)), le32(0xFF000003));
    stop();
}

TEST_F(Server, helpVersionAndWrongUsage)
{
    EXPECT_EQ(root::run({root::built("vokserve"), "--help"}).exitCode, 0);
    EXPECT_EQ(root::run({root::built("vokserve"), "--version"}).output,
              "vokserve " VOKSERVE_VERSION "\n");
    for (const std::vector<std::string>& options :
         std::vector<std::vector<std::string>>{{"--timeout", "0"}, {"--deadline", "x"}, {"extra"}}) {
        std::vector<std::string> command = {root::built("vokserve")};
        command.insert(command.end(), options.begin(), options.end());
        EXPECT_EQ(root::run(command).exitCode, 2) << options.front();
    }
}

} // namespace
