// SPDX-License-Identifier: MIT
//
// vokserve as its clients meet it, well-behaved or not.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <sstream>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "cmdsvc/commands.h"
#include "tests/service/socket_client.h"
#include "tests/support/request.h"
#include "tests/support/root.h"
#include "vokcontrol.h"

namespace {

using Clock = std::chrono::steady_clock;
using request::frame;
using root::le32;
using socketclient::Client;
using socketclient::exchange;
using socketclient::kSocket;
using socketclient::serviceStatus;
using std::chrono::seconds;

constexpr std::uint32_t kTimedOut = 0x53000001;
constexpr std::uint32_t kFailed = 0x53000002;
constexpr std::uint32_t kNotStarted = 0x53000003;
constexpr std::uint32_t kTooLong = 0x53000004;
constexpr std::uint32_t kNotAdmitted = 0x53000005;
constexpr std::uint32_t kStopping = 0x53000006;

/// What a stub does to the request's process that it belongs to.
std::string killChild(const std::string& signal)
{
    return "read -r pid comm state ppid group rest </proc/self/stat; kill -" + signal + " $group";
}

class Server : public root::UntracedTest {
  protected:
    std::optional<root::Program> service;

    void start(std::vector<std::string> options = {})
    {
        options.insert(options.begin(), {root::built("vokserve"), "--shared-tmp", "--socket",
                                         kSocket, "--path", std::getenv("PATH")});
        launch(options);
    }

    /// Starts a service that meets the peer of the file /stubs/peer, where there is one.
    void startAmongStrangers(std::vector<std::string> options = {})
    {
        options.insert(options.begin(),
                       {"env", "LD_PRELOAD=" + root::built("libstranger.so"),
                        root::built("vokserve"), "--shared-tmp", "--socket", kSocket});
        launch(options);
    }

    void launch(const std::vector<std::string>& command)
    {
        service.emplace(command);
        socketclient::awaitService();
    }

    /// Kills the service and waits for that, but not for what it has started.
    void killService()
    {
        ::kill(service->pid(), SIGKILL);
        ::waitpid(service->pid(), nullptr, 0);
        service.reset();
    }

    /// Ends the service.
    /// @return its log lines about requests, without the times that they took. Of clients that are
    ///         this process, "me" stands in the place of user and process.
    std::vector<std::string> stop()
    {
        ::kill(service->pid(), SIGTERM);
        const root::Ended ended = service->wait();
        service.reset();
        EXPECT_EQ(ended.exitCode, 0) << ended.errors;
        EXPECT_FALSE(root::exists(kSocket));
        std::istringstream stream(ended.errors);
        std::vector<std::string> lines;
        const std::string me =
            "uid=" + std::to_string(::geteuid()) + " pid=" + std::to_string(::getpid()) + ":";
        for (std::string line; std::getline(stream, line);) {
            if (const std::size_t who = line.find(me); who != std::string::npos) {
                line.replace(who, me.size(), "me:");
            }
            const std::size_t at = line.find(" ms=");
            if (at != std::string::npos) {
                const std::size_t end = std::min(line.find(' ', at + 1), line.size());
                lines.push_back(line.substr(0, at) + line.substr(end));
            } else if (line != "vokserve: ready" && line != "vokserve: stopped" &&
                       line.find("AddressSanitizer") == std::string::npos &&
                       line.find("qemu: uncaught target signal") == std::string::npos) {
                // A process that a test kills says so itself if it runs under a sanitizer or in an
                // emulator.
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

TEST_F(Server, logsWhatProgramsSayButNoParameter)
{
    root::stub("php", "if [ $2 = tovGetUsers ]; then : >\"$3\"; exit; fi\n"
                      "echo \"useradd: $3 with $4: no group users\" >&2; exit 1");
    start();
    EXPECT_EQ(exchange(frame("crat", 2, "carla\na secret\n")), le32(0x10000005));
    EXPECT_EQ(stop(),
              (std::vector<std::string>{"vokserve: me: 1 crat count=2 answer=4",
                                        "vokserve: me: request 1: its programs said: useradd: "
                                        "[...] with [...]: no group users"}));
}

TEST_F(Server, answersOneRequestAConnection)
{
    root::stub("php", "echo '<username>anna</username>' >\"$3\"");
    start();
    EXPECT_EQ(exchange(frame("lstu", 0)), "lsut " + le32(1) + "\nanna\n");
    EXPECT_EQ(exchange(frame("lstu", 1)), le32(0xFF000003));
    EXPECT_EQ(exchange(frame("gubs", 0)), "");
    EXPECT_EQ(exchange(frame("none", 0)), "");
    EXPECT_EQ(stop(), (std::vector<std::string>{"vokserve: me: 1 lstu count=0 answer=15",
                                                "vokserve: me: 2 lstu count=1 answer=4",
                                                "vokserve: me: 3 gubs count=0 answer=0",
                                                "vokserve: me: 4 none count=0 answer=0"}));
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
    EXPECT_EQ(exchange(largest + "x"), serviceStatus(kTooLong));
    EXPECT_EQ(exchange(largest + std::string(100000, 'x')), serviceStatus(kTooLong));
    EXPECT_EQ(stop(), (std::vector<std::string>{
                          "vokserve: me: 1 rtov count=7 answer=4",
                          "vokserve: me: sent more than 4096 bytes; the request was refused",
                          "vokserve: me: sent more than 4096 bytes; the request was refused"}));
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
    EXPECT_EQ(stop(),
              (std::vector<std::string>{"vokserve: me: 1 rtov count=7 answer=4",
                                        "vokserve: me: did not send a whole request in time",
                                        "vokserve: me: did not send a whole request in time"}));
}

TEST_F(Server, clientThatLeavesBeforeItsAnswerHarmsNobody)
{
    root::stub("php", ": >/stubs/running; sleep 0.2; : >\"$3\"");
    start();
    {
        const Client client;
        client.send(frame("lstu", 0));
        client.finishSending();
        while (!root::exists("/stubs/running")) {
            ::usleep(1000);
        }
    }
    EXPECT_EQ(exchange(frame("rtov", 7)), le32(0xFF000003));
    EXPECT_EQ(stop(), (std::vector<std::string>{"vokserve: me: 1 lstu count=0 answer=10",
                                                "vokserve: me: 2 rtov count=7 answer=4"}))
        << "its request was run all the same";
}

TEST_F(Server, requestOfAClientThatLeavesBeforeItsTurnIsNotRun)
{
    root::stub("php", ": >/stubs/running; sleep 0.5; : >\"$3\"");
    start();
    const Client first;
    first.send(frame("lstu", 0));
    first.finishSending();
    while (!root::exists("/stubs/running")) {
        ::usleep(1000);
    }
    {
        const Client gone;
        gone.send(frame("lstu", 0));
        gone.finishSending();
        ::usleep(100000);
    }
    EXPECT_EQ(exchange(frame("rtov", 7)), le32(0xFF000003));
    EXPECT_EQ(first.receive(), "lsut " + le32(0) + "\n");
    EXPECT_EQ(stop(), (std::vector<std::string>{
                          "vokserve: me: 1 lstu count=0 answer=10",
                          "vokserve: me: left before its turn; the request was not run",
                          "vokserve: me: 2 rtov count=7 answer=4"}));
    EXPECT_EQ(usageOf(3), le32(1));
}

TEST_F(Server, outOfDescriptorsClientsWaitAndAllAreAnswered)
{
    constexpr std::size_t kClients = 100;
    launch({"sh", "-c", "ulimit -n 48; exec \"$@\"", "sh", root::built("vokserve"), "--shared-tmp",
            "--socket", kSocket, "--deadline", "30"});
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
}

TEST_F(Server, oneUserMayHaveThirtyTwoConnectionsAndOthersAreServed)
{
    constexpr std::size_t kMost = 32;
    const std::string groups = root::readFile("/etc/group");
    root::writeFile("/etc/group", groups + "vokcontrol:x:0:\n");
    startAmongStrangers();
    root::writeFile("/etc/group", groups);
    root::writeFile("/stubs/peer", "credentials 4711 1000 0\n");
    std::vector<std::unique_ptr<Client>> clients;
    for (std::size_t i = 0; i < kMost; ++i) {
        clients.push_back(std::make_unique<Client>());
    }
    const Client oneMore;
    EXPECT_EQ(oneMore.receive(), serviceStatus(kNotStarted));
    root::writeFile("/stubs/peer", "credentials 4711 1001 0\n");
    EXPECT_EQ(exchange(frame("rtov", 7)), le32(0xFF000003)) << "another user";
    std::filesystem::remove("/stubs/peer");
    EXPECT_EQ(exchange(frame("rtov", 7)), le32(0xFF000003)) << "root";
    for (const auto& client : clients) {
        client->send(frame("rtov", 7));
        client->finishSending();
        EXPECT_EQ(client->receive(), le32(0xFF000003));
    }
}

TEST_F(Server, whoGoesOnConnectingIsNoLongerHeard)
{
    constexpr std::size_t kMost = 64;
    startAmongStrangers();
    root::writeFile("/stubs/peer", "credentials 4711 1000 100\n");
    std::vector<std::unique_ptr<Client>> clients;
    for (std::size_t i = 0; i < kMost; ++i) {
        // Strangers count as one, however many they are.
        root::writeFile("/stubs/peer", "credentials 4711 " + std::to_string(1000 + i) + " 100\n");
        clients.push_back(std::make_unique<Client>());
        EXPECT_EQ(clients.back()->receive(),
                  serviceStatus(i < kMost / 2 ? kNotAdmitted : kNotStarted));
    }
    const Client oneMore;
    EXPECT_EQ(oneMore.receive(), "");
    std::filesystem::remove("/stubs/peer");
    EXPECT_EQ(exchange(frame("rtov", 7)), le32(0xFF000003));
}

TEST_F(Server, oneRequestRunsAtATimeInTheOrderOfTheirArrival)
{
    root::stub("php",
               "[ ! -e /stubs/running ] || echo overlap >>/stubs/overlaps; : >/stubs/running;"
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

TEST_F(Server, manyConnectionsAtOnceAreAllAnswered)
{
    rlimit limit = {};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    ::setrlimit(RLIMIT_NOFILE, &limit);
    constexpr std::size_t kClients = CONNECTIONS_AT_ONCE;
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
    start();
    std::vector<std::string> log;
    int number = 0;
    for (const char* signal : {"SEGV", "ABRT", "KILL", "FPE"}) {
        root::stub("php", killChild(signal));
        EXPECT_EQ(exchange(frame("lstu", 0)), serviceStatus(kFailed)) << signal;
        root::stub("php", ": >\"$3\"");
        EXPECT_EQ(exchange(frame("lstu", 0)), "lsut " + le32(0) + "\n") << signal;
        log.push_back("vokserve: me: " + std::to_string(++number) +
                      " lstu count=0 answer=10 (its process failed)");
        log.push_back("vokserve: me: " + std::to_string(++number) + " lstu count=0 answer=10");
    }
    EXPECT_EQ(stop(), log);
}

TEST_F(Server, hangOfAHandlerEndsAndTheNextRequestIsServed)
{
    root::stub("php", "sleep 1000");
    start({"--timeout", "1"});
    const Client hanging;
    hanging.send(frame("lstu", 0));
    hanging.finishSending();
    EXPECT_EQ(exchange(frame("rtov", 7)), le32(0xFF000003));
    EXPECT_EQ(hanging.receive(), serviceStatus(kTimedOut));
    EXPECT_EQ(stop(), (std::vector<std::string>{
                          "vokserve: me: 1 lstu count=0 answer=10 (took too long and was ended)",
                          "vokserve: me: 2 rtov count=7 answer=4"}));
}

/// A trace file that nobody reads from holds every shell line that writes to it.
void blockTraces()
{
    std::filesystem::remove(root::kTraceFile);
    ASSERT_EQ(::mkfifo(root::kTraceFile, 0600), 0);
}

TEST_F(Server, shellLineThatHangsWhileCountingHoldsTheServiceNoLongerThanARequestMay)
{
    blockTraces();
    start({"--timeout", "1"});
    EXPECT_EQ(exchange(frame("rtov", 7)), serviceStatus(kTimedOut));
    EXPECT_EQ(exchange(frame("crat", 2, "anna\n';\n")), le32(0xFF000003))
        << "one that is refused is counted only";
    std::filesystem::remove(root::kTraceFile);
    EXPECT_EQ(exchange(frame("rtov", 7)), le32(0xFF000003));
    blockTraces();
    EXPECT_EQ(exchange(frame("rtov", 7)), serviceStatus(kTimedOut));
    EXPECT_EQ(stop(), (std::vector<std::string>{
                          "vokserve: me: 1 rtov count=7 answer=10 (took too long and was ended)",
                          "vokserve: me: request 2: its password was refused",
                          "vokserve: me: 2 crat count=2 answer=4 (refused)",
                          "vokserve: me: 3 rtov count=7 answer=4",
                          "vokserve: me: 4 rtov count=7 answer=10 (took too long and was ended)"}));
    EXPECT_EQ(root::readFile(VOK_USAGE_FILE).size(), std::size_t{VOK_USAGE_SIZE});
    EXPECT_EQ(usageOf(20), le32(1)) << "what hangs at its first trace is not counted yet";
}

TEST_F(Server, serviceItselfRunsNoShellLine)
{
    // Without the guard, whose system() would come before the watcher's.
    const std::vector<std::string> program = {"env",
                                              "LD_PRELOAD=" + root::built("libsystemwatch.so"),
                                              root::built("bare_vokserve"),
                                              "--shared-tmp",
                                              "--socket",
                                              kSocket};
    launch(program);
    EXPECT_EQ(exchange(""), "");
    stop();
    EXPECT_EQ(watch::calls(), std::vector<std::string>{});
    launch(program);
    EXPECT_EQ(exchange(frame("rtov", 2)), "");
    EXPECT_EQ(exchange(frame("crat", 2, "anna\n';\n")), le32(0xFF000003));
    std::vector<std::string> calls = watch::calls();
    const std::size_t savedAt = 2;
    ASSERT_GT(calls.size(), savedAt);
    calls[savedAt].resize(calls[savedAt].find("time: "));
    EXPECT_EQ(calls, (std::vector<std::string>{
                         root::firstTrace("init_cmd_buffer() -- return  "),
                         root::trace("save_cmd_cnt() -- save cmd: 0x766F7472"),
                         "echo \"save_cmd_cnt() -- save to file cmd: 0x766F7472 ",
                         root::trace("cmd=766f7472 "), root::trace("param_count=2"),
                         root::firstTrace("save_cmd_cnt() -- save cmd: 0x74617263")}));
    stop();
    EXPECT_EQ(watch::calls().size(), calls.size()) << "saved without a shell";
    EXPECT_EQ(usageOf(1), le32(1));
    EXPECT_EQ(usageOf(20), le32(1));
}

TEST_F(Server, hangEndsWithAllThatItStarted)
{
    root::stub("php",
               "sleep 1000 & echo $! >/stubs/background; echo $$ >/stubs/script; sleep 1000");
    start({"--timeout", "1"});
    EXPECT_EQ(exchange(frame("lstu", 0)), serviceStatus(kTimedOut));
    for (const char* file : {"/stubs/background", "/stubs/script"}) {
        const int process = std::stoi(root::readFile(file));
        for (int tries = 0; tries < 500 && ::kill(process, 0) == 0; ++tries) {
            ::usleep(10000);
        }
        EXPECT_NE(::kill(process, 0), 0) << file;
    }
    EXPECT_FALSE(root::exists("/tmp/outbuf1"));
}

TEST_F(Server, fullDiskPassesAndTheNextRequestIsServed)
{
    start();
    root::fillDisk("/tmp");
    EXPECT_EQ(exchange(frame("rtov", 7)), "");
    std::filesystem::remove("/tmp/filler");
    EXPECT_EQ(exchange(frame("rtov", 7)), le32(0xFF000003));
}

TEST_F(Server, fullDiskOfTheSettingsKeepsTheCountsForLater)
{
    start();
    EXPECT_EQ(exchange(frame("rtov", 2)), "");
    root::fillDisk("/etc/pelconfig");
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(exchange(frame("rtov", 7)), le32(0xFF000003));
    }
    std::filesystem::remove("/etc/pelconfig/filler");
    EXPECT_EQ(exchange(frame("rtov", 7)), le32(0xFF000003));
    stop();
    EXPECT_EQ(root::readFile(VOK_USAGE_FILE).size(), std::size_t{VOK_USAGE_SIZE});
    EXPECT_EQ(usageOf(20), le32(6));
}

TEST_F(Server, readOnlyFolderPassesAndTheNextRequestIsServed)
{
    root::stub("php", ": >\"$3\"");
    start();
    EXPECT_EQ(exchange(frame("lstu", 0)), "lsut " + le32(0) + "\n");
    std::filesystem::permissions("/tmp", std::filesystem::perms(0555));
    EXPECT_EQ(exchange(frame("lstu", 0)), serviceStatus(kFailed));
    EXPECT_EQ(exchange(frame("rtov", 7)), serviceStatus(kFailed));
    std::filesystem::permissions("/tmp", std::filesystem::perms(0755));
    EXPECT_EQ(exchange(frame("lstu", 0)), "lsut " + le32(0) + "\n");
    EXPECT_EQ(exchange(frame("rtov", 7)), le32(0xFF000003));
    stop();
    EXPECT_EQ(usageOf(3), le32(3));
    EXPECT_EQ(usageOf(20), le32(2));
}

TEST_F(Server, missingScriptInterpreterIsAnsweredAndTheNextRequestIsServed)
{
    start();
    std::filesystem::rename("/usr/bin/php", "/usr/bin/php.away");
    const std::string answer = exchange(frame("crat", 2, "anna\nword\n"));
    std::filesystem::rename("/usr/bin/php.away", "/usr/bin/php");
    EXPECT_EQ(answer, le32(0x10000005)) << "the user was not created";
    root::stub("php", "echo '<username>bob</username>' >\"$3\"");
    EXPECT_EQ(exchange(frame("crat", 2, "anna\nword\n")), le32(0));
    EXPECT_EQ(exchange(frame("lstu", 0)), "lsut " + le32(1) + "\nbob\n");
}

TEST_F(Server, killedServiceLeavesNothingThatItsFollowerStumblesOver)
{
    watch::mayBeStrange("ps | grep -q");
    root::stub("php", "sleep 0.02; echo '<username>anna</username>' >\"$3\"");
    for (int delay = 0; delay < 60; delay += 3) {
        start();
        const Client client;
        client.send(frame("lstu", 0));
        client.finishSending();
        ::usleep(static_cast<useconds_t>(delay) * 1000);
        killService();
        // What the killed one had started comes to its end first.
        while (std::system("ps | grep -q '[/]etc/inc/api_user'") == 0) {
            ::usleep(1000);
        }
        ::usleep(30000);
        start();
        ASSERT_EQ(exchange(frame("lstu", 0)), "lsut " + le32(1) + "\nanna\n") << delay;
        ASSERT_EQ(exchange(frame("rtov", 7)), le32(0xFF000003)) << delay;
        stop();
        ASSERT_EQ(root::readFile(VOK_USAGE_FILE).size(), std::size_t{VOK_USAGE_SIZE});
    }
}

TEST_F(Server, requestThatCouldMakeTheShellDoThingsIsRefusedCountedAndLogged)
{
    root::stub("php", ": >/stubs/asked; echo '<username>anna</username>' >\"$3\"");
    start();
    EXPECT_EQ(exchange(frame("crat", 2, "anna\n';>/stubs/canary;'\n")), le32(0xFF000003));
    EXPECT_EQ(exchange(frame("gsp1", 1, "`>/stubs/canary`\n")), le32(0xC1000003));
    EXPECT_EQ(exchange(std::string("subs \x08\0\1", 8) + "`>/stubs/canary`\n"),
              "subs " + le32(0xFF000003) + std::string(1, '\0'));
    EXPECT_EQ(exchange(frame("wags", 2, "user\n\">/stubs/canary\"\n")), "erro " + le32(2));
    EXPECT_FALSE(root::exists("/stubs/asked")) << "nothing was dispatched";
    EXPECT_EQ(exchange(frame("lstu", 0)), "lsut " + le32(1) + "\nanna\n");
    EXPECT_EQ(stop(),
              (std::vector<std::string>{"vokserve: me: request 1: its password was refused",
                                        "vokserve: me: 1 crat count=2 answer=4 (refused)",
                                        "vokserve: me: request 2: its share was refused",
                                        "vokserve: me: 2 gsp1 count=1 answer=4 (refused)",
                                        "vokserve: me: request 3: its user was refused",
                                        "vokserve: me: 3 subs count=1610678280 answer=10 (refused)",
                                        "vokserve: me: request 4: its user was refused",
                                        "vokserve: me: 4 wags count=2 answer=9 (refused)",
                                        "vokserve: me: 5 lstu count=0 answer=15"}));
    EXPECT_EQ(usageOf(1), le32(1));
    EXPECT_EQ(usageOf(16), le32(1));
    EXPECT_FALSE(root::exists("/stubs/canary"));
}

TEST_F(Server, strangerIsRefusedAndLogged)
{
    startAmongStrangers();
    root::writeFile("/stubs/peer", "credentials 4711 1000 100\ngroups 0 27\n");
    EXPECT_EQ(exchange(frame("rtov", 7)), serviceStatus(kNotAdmitted));
    EXPECT_EQ(exchange(""), serviceStatus(kNotAdmitted)) << "whatever they ask";
    root::writeFile("/stubs/peer", "");
    EXPECT_EQ(exchange(frame("rtov", 7)), serviceStatus(kNotAdmitted));
    std::filesystem::remove("/stubs/peer");
    EXPECT_EQ(exchange(frame("rtov", 7)), le32(0xFF000003)) << "root is admitted";
    EXPECT_EQ(
        stop(),
        (std::vector<std::string>{
            "vokserve: uid=1000 pid=4711: may not use the service; the connection was refused",
            "vokserve: uid=1000 pid=4711: may not use the service; the connection was refused",
            "vokserve: uid=? pid=?: may not use the service; the connection was refused",
            "vokserve: me: 1 rtov count=7 answer=4"}));
    EXPECT_EQ(usageOf(20), le32(1)) << "what is refused is no request";
}

TEST_F(Server, strangerIsToldAtOnceAndCannotHoldTheServiceUp)
{
    startAmongStrangers();
    root::writeFile("/stubs/peer", "credentials 4711 1000 100\n");
    const auto begin = Clock::now();
    const Client silent;
    EXPECT_EQ(silent.receive(), serviceStatus(kNotAdmitted));
    EXPECT_LT(Clock::now() - begin, seconds(5));
}

TEST_F(Server, whoIsTurnedAwayLearnsWhyHoweverMuchTheySend)
{
    startAmongStrangers();
    for (const std::size_t size : {10U, 4096U, 4097U, 200000U}) {
        root::writeFile("/stubs/peer", "credentials 4711 1000 100\n");
        const Client stranger;
        stranger.send(std::string(size, 'x'));
        stranger.finishSending();
        EXPECT_EQ(stranger.receive(), serviceStatus(kNotAdmitted)) << size;
        std::filesystem::remove("/stubs/peer");
        const Client root;
        root.send(std::string(4097 + size, 'x'));
        ::usleep(20000);
        root.send("more");
        root.finishSending();
        EXPECT_EQ(root.receive(), serviceStatus(kTooLong)) << size;
    }
}

TEST_F(Server, whoAsksForWrongPasswordsWaitsAndNobodyElse)
{
    const std::string wrong = "erro " + le32(1);
    const std::string check = frame("wall", 2, "anna\nword\n");
    startAmongStrangers();
    const auto begin = Clock::now();
    EXPECT_EQ(exchange(check), wrong);
    EXPECT_EQ(exchange(check), wrong);
    EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(500));
    const Client waiting;
    waiting.send(check);
    waiting.finishSending();
    ::usleep(50000);
    const auto others = Clock::now();
    EXPECT_EQ(exchange(frame("rtov", 7)), le32(0xFF000003)) << "another command";
    EXPECT_LT(Clock::now() - others, std::chrono::milliseconds(700));
    EXPECT_EQ(waiting.receive(), wrong);
    EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(1500));
    const Client told;
    told.send(check);
    told.finishSending();
    ::usleep(50000);
    EXPECT_EQ(stop(), (std::vector<std::string>{"vokserve: me: 1 wall count=2 answer=9",
                                                "vokserve: me: 2 wall count=2 answer=9",
                                                "vokserve: me: 3 rtov count=7 answer=4",
                                                "vokserve: me: 4 wall count=2 answer=9"}));
    EXPECT_EQ(told.receive(), serviceStatus(kStopping)) << "a pause does not hold up the end";
}

TEST_F(Server, membersOfItsGroupAreServed)
{
    const std::string groups = root::readFile("/etc/group");
    root::writeFile("/etc/group", groups + "vokcontrol:x:0:\n");
    startAmongStrangers();
    for (const char* peer :
         {"credentials 4711 1000 0\n", "credentials 4711 1000 100\ngroups 27 0\n"}) {
        root::writeFile("/stubs/peer", peer);
        EXPECT_EQ(exchange(frame("rtov", 7)), le32(0xFF000003)) << peer;
    }
    root::writeFile("/stubs/peer", "credentials 4711 1000 100\ngroups 27\n");
    EXPECT_EQ(exchange(frame("rtov", 7)), serviceStatus(kNotAdmitted));
    root::writeFile("/etc/group", groups);
    EXPECT_EQ(stop().size(), 3U);
}

TEST_F(Server, viewersMayLookAndNothingElse)
{
    const std::string groups = root::readFile("/etc/group");
    root::writeFile("/etc/group", groups + "vokcontrol:x:0:\nvokcontrol-view:x:4243:\n");
    startAmongStrangers();
    root::writeFile("/etc/group", groups);
    root::writeFile("/stubs/peer", "credentials 4711 1000 100\ngroups 27 4243\n");
    for (const cmdsvc::Command& command : cmdsvc::kCommands) {
        const std::string answer = exchange(frame(std::string(command.code), 99));
        EXPECT_EQ(answer == serviceStatus(kNotAdmitted), command.right == cmdsvc::Right::kFull)
            << command.code;
    }
    static_cast<void>(stop());
}

TEST_F(Server, whatAViewerMayNotSendIsRefusedLoggedAndNotRun)
{
    const std::string groups = root::readFile("/etc/group");
    root::writeFile("/etc/group", groups + "vokcontrol:x:0:\nvokcontrol-view:x:4243:\n");
    root::stub("php", "touch /stubs/run");
    startAmongStrangers();
    root::writeFile("/etc/group", groups);
    struct stat status = {};
    ASSERT_EQ(::stat(kSocket, &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0666U);
    root::writeFile("/stubs/peer", "credentials 4711 1000 100\ngroups 27 4243\n");
    EXPECT_EQ(exchange(frame("crat", 2, "anna\nsecret\n")), serviceStatus(kNotAdmitted));
    EXPECT_EQ(exchange(frame("nope", 0)), serviceStatus(kNotAdmitted)) << "nobody knows it";
    EXPECT_EQ(exchange("ls"), serviceStatus(kNotAdmitted)) << "no command at all";
    EXPECT_FALSE(root::exists("/stubs/run"));
    EXPECT_EQ(exchange(frame("rtov", 7)), le32(0xFF000003)) << "a viewer's command";
    root::writeFile("/stubs/peer", "credentials 4711 1000 100\ngroups 27 4242\n");
    EXPECT_EQ(exchange(frame("rtov", 7)), serviceStatus(kNotAdmitted)) << "a stranger";
    EXPECT_EQ(
        stop(),
        (std::vector<std::string>{
            "vokserve: uid=1000 pid=4711: may only look, not send crat; the request was refused",
            "vokserve: uid=1000 pid=4711: may only look, not send nope; the request was refused",
            "vokserve: uid=1000 pid=4711: may only look, not send 0x6c73; the request was refused",
            "vokserve: uid=1000 pid=4711: 1 rtov count=7 answer=4",
            "vokserve: uid=1000 pid=4711: may not use the service; the connection was refused"}));
    EXPECT_EQ(usageOf(1), le32(0)) << "what is refused is no request";
    EXPECT_EQ(usageOf(20), le32(1));
}

TEST_F(Server, groupOfViewersThatIsAskedForMustBeThere)
{
    const root::Ended ended =
        root::run({root::built("vokserve"), "--socket", kSocket, "--view-group", "nosuch"});
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_EQ(ended.errors,
              "vokserve: there is no group nosuch; make it (groupadd --system nosuch), "
              "or use --view-group\n");
    root::writeFile("/tmp/settings", "[service]\nview-group = other\n");
    EXPECT_EQ(root::run({root::built("vokserve"), "--socket", kSocket, "--config", "/tmp/settings"})
                  .errors,
              "vokserve: there is no group other; make it (groupadd --system other), "
              "or use --view-group\n");
}

TEST_F(Server, groupThatIsAskedForMustBeThere)
{
    const root::Ended ended = root::run(
        {root::built("vokserve"), "--shared-tmp", "--socket", kSocket, "--group", "nosuch"});
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_EQ(ended.errors,
              "vokserve: there is no group nosuch; make it (groupadd --system nosuch), "
              "or use --group\n");
    EXPECT_FALSE(root::exists(kSocket));
}

TEST_F(Server, settingsSayWhatOptionsDoNot)
{
    root::writeFile("/tmp/settings", "[service]\nsocket = /tmp/elsewhere\ntimeout = 1\n");
    root::stub("php", "sleep 1000");
    start({"--config", "/tmp/settings"});
    EXPECT_EQ(exchange(frame("lstu", 0)), serviceStatus(kTimedOut));
    EXPECT_FALSE(root::exists("/tmp/elsewhere"));
}

TEST_F(Server, groupOfTheSettingsMustBeThereUnlessItIsTheDefault)
{
    root::writeFile("/tmp/settings", "[service]\ngroup = nosuch\n");
    const root::Ended ended =
        root::run({root::built("vokserve"), "--socket", kSocket, "--config", "/tmp/settings"});
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_EQ(ended.errors,
              "vokserve: there is no group nosuch; make it (groupadd --system nosuch), "
              "or use --group\n");
    root::writeFile("/tmp/settings", "[service]\ngroup = vokcontrol\n");
    start({"--config", "/tmp/settings"});
}

TEST_F(Server, settingsThatAreNotUnderstoodAreWrongUsage)
{
    root::writeFile("/tmp/settings", "[service]\ntimeout = soon\n");
    const root::Ended ended =
        root::run({root::built("vokserve"), "--socket", kSocket, "--config", "/tmp/settings"});
    EXPECT_EQ(ended.exitCode, 2);
    EXPECT_EQ(ended.output, "");
    EXPECT_EQ(ended.errors,
              "vokserve: /tmp/settings:2: timeout must be a whole number from 1 to 86400\n");
    EXPECT_FALSE(root::exists(kSocket));
}

TEST_F(Server, settingsThatOthersCanWriteAreNotBelieved)
{
    root::writeFile("/tmp/settings", "[service]\ntimeout = 5\n");
    std::filesystem::permissions("/tmp/settings", std::filesystem::perms(0666));
    const root::Ended ended =
        root::run({root::built("vokserve"), "--socket", kSocket, "--config", "/tmp/settings"});
    EXPECT_EQ(ended.exitCode, 2);
    EXPECT_EQ(ended.errors,
              "vokserve: /tmp/settings: others can change this file; it must belong to root, and "
              "only its owner may write it (chown root, chmod go-w)\n");
}

TEST_F(Server, ownTmpThatCannotBeHadEndsTheService)
{
    std::filesystem::permissions("/tmp", std::filesystem::perms(01777));
    const root::Ended ended = root::run({root::built("vokserve"), "--socket", "/stubs/socket"});
    std::filesystem::permissions("/tmp", std::filesystem::perms(0755));
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_EQ(
        ended.errors,
        "vokserve: cannot have a /tmp of its own: unsharing mounts: Operation not permitted. Other "
        "accounts can forge the work files in a shared /tmp; to use it anyway: --shared-tmp\n");
    EXPECT_FALSE(root::exists("/stubs/socket"));
}

TEST_F(Server, socketIsForRootAndItsGroup)
{
    start({"--group", "root"});
    struct stat status = {};
    ASSERT_EQ(::stat(kSocket, &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0660U);
    EXPECT_EQ(status.st_uid, ::geteuid());
    EXPECT_EQ(status.st_gid, 0U);
    EXPECT_EQ(exchange(frame("rtov", 7)), le32(0xFF000003));
    stop();
}

TEST_F(Server, whatTheServiceWasStartedWithReachesNoRequest)
{
    root::stub("php", "tr '\\0' '\\n' </proc/$$/environ | sort >/stubs/seen;"
                      " ls /proc/self/fd >>/stubs/seen; : >\"$3\"");
    launch({"env", "ENV=/stubs/evil", "SECRET=word", "LC_ALL=de_DE.UTF-8", "sh", "-c",
            "exec 5</dev/null 7</dev/null; exec \"$@\"", "sh", root::built("vokserve"),
            "--shared-tmp", "--socket", kSocket, "--path", "/stubs:/usr/bin"});
    const Client other;
    EXPECT_EQ(exchange(frame("lstu", 0)), "lsut " + le32(0) + "\n");
    EXPECT_EQ(root::readFile("/stubs/seen"), "HOME=/\nLC_ALL=C\nPATH=/stubs:/usr/bin\nPWD=/tmp\n"
                                             "0\n1\n2\n3\n");
}

TEST_F(Server, whatTheServiceHasOpenIsClosedToEveryShell)
{
    start();
    const Client client;
    client.send("rt");
    EXPECT_EQ(exchange(frame("rtov", 7)), le32(0xFF000003));
    const std::string process = "/proc/" + std::to_string(service->pid());
    int sockets = 0;
    for (const std::string& descriptor : root::list(process + "/fd")) {
        const std::string what = std::filesystem::read_symlink(process + "/fd/" + descriptor);
        if (!what.starts_with("socket:")) {
            continue;
        }
        ++sockets;
        const std::string info = root::readFile(process + "/fdinfo/" + descriptor);
        const std::size_t at = info.find("flags:");
        ASSERT_NE(at, std::string::npos);
        EXPECT_NE(std::stoul(info.substr(at + 6), nullptr, 8) & O_CLOEXEC, 0U) << descriptor;
    }
    EXPECT_EQ(sockets, 2) << "the listener's and the client's";
}

TEST_F(Server, eachRequestStartsTheTraceFileAfresh)
{
    root::stub("php", "echo '<username>anna</username>' >\"$3\"");
    start();
    EXPECT_EQ(exchange(frame("lstu", 0)), "lsut " + le32(1) + "\nanna\n");
    EXPECT_NE(root::readFile(root::kTraceFile).find("found user anna\n"), std::string::npos);
    EXPECT_EQ(exchange(frame("rtov", 7)), le32(0xFF000003));
    const std::string trace = root::readFile(root::kTraceFile);
    EXPECT_EQ(trace.find("found user anna"), std::string::npos);
    EXPECT_NE(trace.find("exiting with error 0xff000003\n"), std::string::npos);
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

TEST_F(Server, endFinishesTheRequestInHandAndTellsTheOthers)
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
    const Client silent;
    const Client half;
    half.send("rt");
    ::usleep(100000);
    ::kill(service->pid(), SIGTERM);
    EXPECT_EQ(second.receive(), serviceStatus(kStopping));
    EXPECT_EQ(silent.receive(), serviceStatus(kStopping));
    EXPECT_EQ(half.receive(), serviceStatus(kStopping));
    EXPECT_EQ(::kill(service->pid(), 0), 0) << "they did not have to wait for the request that ran";
    EXPECT_EQ(first.receive(), "lsut " + le32(0) + "\n");
    EXPECT_EQ(stop(), std::vector<std::string>{"vokserve: me: 1 lstu count=0 answer=10"});
    EXPECT_EQ(usageOf(3), le32(1));
}

TEST_F(Server, endTellsClientsThatWereNotAcceptedYet)
{
    start();
    ::kill(service->pid(), SIGSTOP);
    std::vector<std::unique_ptr<Client>> clients;
    for (int i = 0; i < 50; ++i) {
        clients.push_back(std::make_unique<Client>());
        clients.back()->send(frame("rtov", 7));
        clients.back()->finishSending();
    }
    ::kill(service->pid(), SIGTERM);
    ::kill(service->pid(), SIGCONT);
    for (const auto& client : clients) {
        const std::string answer = client->receive();
        EXPECT_TRUE(answer == serviceStatus(kStopping) || answer == le32(0xFF000003));
    }
    stop();
}

TEST_F(Server, clientsThatDoNotListenHoldUpTheEndForAMomentOnly)
{
    start({"--deadline", "60"});
    const Client silent;
    ::usleep(100000);
    const auto begin = Clock::now();
    stop();
    EXPECT_LT(Clock::now() - begin, seconds(5));
    EXPECT_EQ(silent.receive(), serviceStatus(kStopping));
}

TEST_F(Server, countsGoOnAfterARestart)
{
    start();
    EXPECT_EQ(exchange(frame("rtov", 2)), "");
    stop();
    start();
    EXPECT_EQ(exchange(frame("rtov", 2)), "");
    stop();
    EXPECT_EQ(usageOf(20), le32(2));
}

TEST_F(Server, socketOfAKilledServiceIsTakenOver)
{
    start();
    killService();
    ASSERT_TRUE(root::exists(kSocket));
    start();
    EXPECT_EQ(exchange(frame("rtov", 7)), le32(0xFF000003));
    stop();
}

TEST_F(Server, secondServiceIsRefused)
{
    start();
    const std::string complaint = "vokserve: another service runs already (process " +
                                  std::to_string(service->pid()) + "); stop it first\n";
    const std::string program = root::built("vokserve");
    const std::string handOver = "LISTEN_FDS=1 LISTEN_PID=$$ exec " + program + " 3</dev/null";
    for (const std::vector<std::string>& command :
         std::vector<std::vector<std::string>>{{program, "--socket", kSocket},
                                               {program, "--socket", "/tmp/other"},
                                               {"sh", "-c", handOver}}) {
        const root::Ended ended = root::run(command);
        EXPECT_EQ(ended.exitCode, 3) << command.back();
        EXPECT_EQ(ended.errors, complaint) << command.back();
    }
    EXPECT_FALSE(root::exists("/tmp/other"));
    EXPECT_EQ(exchange(frame("rtov", 7)), le32(0xFF000003));
    stop();
}

TEST_F(Server, helpVersionAndWrongUsage)
{
    EXPECT_EQ(root::run({root::built("vokserve"), "--help"}).exitCode, 0);
    EXPECT_EQ(root::run({root::built("vokserve"), "--version"}).output,
              "vokserve " VOKSERVE_VERSION "\n");
    for (const std::vector<std::string>& options : std::vector<std::vector<std::string>>{
             {"--timeout", "0"}, {"--deadline", "x"}, {"--group"}, {"extra"}}) {
        std::vector<std::string> command = {root::built("vokserve")};
        command.insert(command.end(), options.begin(), options.end());
        EXPECT_EQ(root::run(command).exitCode, 2) << options.front();
    }
    for (const char* option : {"--timeout", "--deadline"}) {
        for (const char* number : {"0", "-1", "x", "0.5"}) {
            EXPECT_EQ(root::run({root::built("vokserve"), option, number}).errors,
                      std::string(option) + ": needs a number of seconds above 0\n" +
                          "Run with --help for more information.\n");
        }
    }
}

} // namespace
