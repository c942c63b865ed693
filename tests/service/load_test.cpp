// SPDX-License-Identifier: MIT
//
// Ten thousand requests through one service: every answer right, every request counted, and nothing
// that piles up.
#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <optional>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

#include "tests/service/socket_client.h"
#include "tests/support/request.h"
#include "tests/support/root.h"
#include "vokcontrol.h"

namespace {

using request::frame;
using root::le32;
using socketclient::exchange;

constexpr int kRounds = 100;

/// A request of the mix, as often as it comes in a round of a hundred.
struct Share {
    int count;
    std::string request;
    std::string answer;
    std::size_t slot; ///< where it is counted
    bool isRefused = false;
};

const std::vector<Share>& mix()
{
    const std::string zero(1, '\0');
    static const std::vector<Share> shares = {
        {12, frame("crat", 2, "an`id`na\nword\n"), le32(0xFF000003), 1, true},
        {12, frame("crat", 2, "anna\n'; id; '\n"), le32(0xFF000003), 1, true},
        {12, frame("gsp1", 1, "$(id)\n"), le32(0xC1000003), 16, true},
        {10, frame("host", 4, "112115302026.45\nna;s\nhome\nen\n"), le32(0xFF000003), 6, true},
        {10, frame("pshr", 3, "guest\n../Music\n"), le32(0xFF000003), 18, true},
        {6, frame("wasu", 4, "-rf\nx\ny\n\1\n"), "erro " + le32(3), 21, true},
        {6, std::string("subs \7\0\1", 8) + "a&b\n", "subs " + le32(0xFF000003) + zero, 21, true},
        {8, frame("gubs", 0), "", 21},
        {6, frame("none", 0), "", 21},
        {8, frame("rtov", 7), le32(0xFF000003), 20},
        {3, frame("lstu", 1), le32(0xFF000003), 3},
        {3, frame("wall", 2, "anna\nword\n"), "erro " + le32(1), 21},
        {3, frame("vers", 0), "vert " + le32(1) + "\nvokcontrol 1.0\n", 5},
        {1, frame("lstu", 0), "lsut " + le32(2) + "\nanna\nÉlise\n", 3},
    };
    return shares;
}

/// What a service holds at a moment.
struct Holdings {
    long residentKib;
    std::size_t descriptors;
    std::string children;
};

class Load : public root::UntracedTest {
  protected:
    void SetUp() override
    {
        root::UntracedTest::SetUp();
        root::writeFile("/etc/buildinfo.txt", "vokcontrol 1.0");
        root::stub("php", "printf '%s\\n' '<username>anna</username>' '<username>Élise</username>'"
                          " >\"$3\"");
        service.emplace(std::vector<std::string>{root::built("vokserve"), "--shared-tmp",
                                                 "--socket", socketclient::kSocket, "--path",
                                                 std::getenv("PATH"), "--password-pause", "0"});
        socketclient::awaitService();
    }

    void TearDown() override
    {
        if (service) {
            ::kill(service->pid(), SIGKILL);
            static_cast<void>(service->wait());
        }
        std::filesystem::remove("/etc/buildinfo.txt");
        root::UntracedTest::TearDown();
    }

    /// One round of the mix, its parts scattered in the same way each time.
    static void runRound()
    {
        std::vector<const Share*> round;
        for (const Share& share : mix()) {
            round.insert(round.end(), static_cast<std::size_t>(share.count), &share);
        }
        constexpr std::size_t kStride = 37;
        for (std::size_t i = 0; i < round.size(); ++i) {
            const Share& share = *round[i * kStride % round.size()];
            ASSERT_EQ(exchange(share.request), share.answer) << share.request;
        }
    }

    [[nodiscard]] Holdings look() const
    {
        const std::string process = "/proc/" + std::to_string(service->pid());
        std::ifstream sizes(process + "/statm");
        long whole = 0;
        long resident = 0;
        sizes >> whole >> resident;
        return {resident * ::sysconf(_SC_PAGESIZE) / 1024, root::list(process + "/fd").size(),
                root::readFile(process + "/task/" + std::to_string(service->pid()) + "/children")};
    }

    std::optional<root::Program> service;
};

TEST_F(Load, tenThousandRequestsLeaveTheServiceAsItWas)
{
    runRound();
    const Holdings before = look();
    for (int round = 1; round < kRounds && !HasFatalFailure(); ++round) {
        runRound();
    }
    const Holdings after = look();
    constexpr long kSlackKib = 1024;
    EXPECT_LE(after.residentKib, before.residentKib + kSlackKib);
    EXPECT_EQ(after.descriptors, before.descriptors);
    EXPECT_EQ(after.children, "");
    EXPECT_EQ(root::list("/tmp"), (std::vector<std::string>{"dbg_vokcontrol.txt", "socket"}));
    EXPECT_LT(std::filesystem::file_size(root::kTraceFile), 16384U);

    ::kill(service->pid(), SIGTERM);
    const root::Ended ended = service->wait();
    service.reset();
    EXPECT_EQ(ended.exitCode, 0);

    std::vector<std::uint32_t> counts(21);
    std::size_t requests = 0;
    std::size_t refused = 0;
    for (const Share& share : mix()) {
        const auto sent = static_cast<std::size_t>(share.count * kRounds);
        counts[share.slot - 1] += static_cast<std::uint32_t>(sent);
        requests += sent;
        refused += share.isRefused ? sent : 0;
    }
    EXPECT_EQ(requests, 10000U);
    const std::string usage = root::readFile(VOK_USAGE_FILE);
    ASSERT_EQ(usage.size(), std::size_t{VOK_USAGE_SIZE});
    for (std::size_t slot = 0; slot < counts.size(); ++slot) {
        EXPECT_EQ(usage.substr(8 * slot + 4, 4), le32(counts[slot])) << "slot " << slot + 1;
    }

    std::istringstream log(ended.errors);
    std::size_t answered = 0;
    std::size_t complaints = 0;
    for (std::string line; std::getline(log, line);) {
        answered += (line.find(" ms=") != std::string::npos) ? 1U : 0U;
        complaints += line.ends_with(" was refused") ? 1U : 0U;
    }
    EXPECT_EQ(answered, requests);
    EXPECT_EQ(complaints, refused);
}

} // namespace
