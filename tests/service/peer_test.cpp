// SPDX-License-Identifier: MIT
#include "service/peer.h"

#include <array>
#include <gtest/gtest.h>
#include <numeric>
#include <span>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

#include "tests/support/root.h"

namespace {

using service::Admission;
using service::Peer;
using service::peerOf;

const service::GroupName kNoViewers = {"nosuch-view"};

class ServicePeer : public root::Test {
  protected:
    void SetUp() override
    {
        root::Test::SetUp();
        ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
        groupFile = root::readFile("/etc/group");
        root::writeFile("/etc/group", groupFile + "vokcontrol:x:4242:\nfamily:x:7:\n");
    }

    void TearDown() override
    {
        ::close(ends[0]);
        ::close(ends[1]);
        root::writeFile("/etc/group", groupFile);
        root::Test::TearDown();
    }

    /// Has the kernel tell of a peer with this process, user and group, and of other groups.
    static void meet(const std::string& credentials, const std::string& groups)
    {
        root::writeFile("/stubs/peer", "credentials " + credentials + "\n" +
                                           (groups.empty() ? "" : "groups ") + groups + "\n");
    }

    [[nodiscard]] std::vector<gid_t> groupsOfPeer() const
    {
        const std::optional<Peer> peer = peerOf(ends[0]);
        return peer ? peer->groups : std::vector<gid_t>{};
    }

    std::array<int, 2> ends{};
    std::string groupFile;
};

TEST_F(ServicePeer, kernelTellsWhoIsAtTheOtherEnd)
{
    const std::optional<Peer> peer = peerOf(ends[0]);
    ASSERT_TRUE(peer);
    EXPECT_EQ(peer->process, ::getpid());
    EXPECT_EQ(peer->user, ::geteuid());
    std::vector<gid_t> groups(static_cast<std::size_t>(::getgroups(0, nullptr)) + 1);
    groups.front() = ::getegid();
    ASSERT_GE(::getgroups(static_cast<int>(groups.size()) - 1, groups.data() + 1), 0);
    EXPECT_EQ(peer->groups, groups);
}

TEST_F(ServicePeer, whatIsNoSocketHasNoPeer)
{
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe(pipe.data()), 0);
    EXPECT_FALSE(peerOf(pipe[0]));
    ::close(pipe[0]);
    ::close(pipe[1]);
    EXPECT_FALSE(peerOf(pipe[0])) << "nor has what is closed";
    EXPECT_FALSE(peerOf(-1));
}

TEST_F(ServicePeer, peerHasItsOwnGroupFirstAndTheOthersBehindIt)
{
    meet("4711 1000 100", "27 100 4242");
    const std::optional<Peer> peer = peerOf(ends[0]);
    ASSERT_TRUE(peer);
    EXPECT_EQ(peer->process, 4711);
    EXPECT_EQ(peer->user, 1000U);
    EXPECT_EQ(peer->groups, (std::vector<gid_t>{100, 27, 100, 4242}));
}

TEST_F(ServicePeer, noGroupOfManyIsLost)
{
    for (const unsigned count : {1U, 63U, 64U, 65U, 1000U}) {
        std::vector<gid_t> groups(count + 1);
        std::iota(groups.begin(), groups.end(), 5000U);
        std::string text;
        for (const gid_t group : std::span(groups).subspan(1)) {
            text += std::to_string(group) + " ";
        }
        meet("4711 1000 5000", text);
        EXPECT_EQ(groupsOfPeer(), groups) << count;
    }
}

TEST_F(ServicePeer, kernelThatKnowsNoOtherGroupsLeavesItsOwn)
{
    meet("4711 1000 100", "");
    EXPECT_EQ(groupsOfPeer(), std::vector<gid_t>{100});
}

TEST_F(ServicePeer, peerThatTheKernelDoesNotTellIsNone)
{
    root::writeFile("/stubs/peer", "groups 4242\n");
    EXPECT_FALSE(peerOf(ends[0]));
}

TEST_F(ServicePeer, rootAndTheServicesUserAndTheGroupsMembersMayAsk)
{
    const Admission admission({"vokcontrol", true}, kNoViewers);
    EXPECT_EQ(admission.group(), 4242U);
    EXPECT_TRUE(admission.admits({1, 0, {0}}));
    EXPECT_TRUE(admission.admits({1, ::geteuid(), {100}}));
    EXPECT_TRUE(admission.admits({1, 1000, {4242}})) << "by its own group";
    EXPECT_TRUE(admission.admits({1, 1000, {100, 7, 4242, 8}})) << "by another one";
}

TEST_F(ServicePeer, nobodyElseMayAsk)
{
    const Admission admission({"vokcontrol", true}, kNoViewers);
    EXPECT_FALSE(admission.admits({1, 1000, {100}}));
    EXPECT_FALSE(admission.admits({1, 1000, {}}));
    EXPECT_FALSE(admission.admits({1, 1000, {0}})) << "root's group is not root";
    EXPECT_FALSE(admission.admits({1, 4242, {4241, 4243, 7}})) << "a user's number is no group's";
    EXPECT_FALSE(admission.admits({1, static_cast<uid_t>(-1), {100}}));
    EXPECT_FALSE(admission.admits({0, 1000, {100}}));
}

TEST_F(ServicePeer, groupThatIsAskedForMustBeThere)
{
    try {
        const Admission admission({"nosuch", true}, kNoViewers);
        FAIL() << "it was not missed";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "there is no group nosuch; make it (groupadd --system nosuch), "
                                   "or use --group");
    }
}

TEST_F(ServicePeer, withoutTheUsualGroupItIsRootAlone)
{
    const Admission admission({"nosuch"}, {"nosuch-view"});
    EXPECT_EQ(admission.group(), std::nullopt);
    EXPECT_TRUE(admission.admits({1, 0, {0}}));
    EXPECT_FALSE(admission.admits({1, 1000, {0, 4242}}));
    EXPECT_FALSE(admission.admits({1, 1000, {}}));
}

TEST_F(ServicePeer, groupOfViewersThatIsAskedForMustBeThere)
{
    try {
        const Admission admission({"vokcontrol"}, {"nosuch-view", true});
        FAIL() << "it was not missed";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "there is no group nosuch-view; make it (groupadd --system "
                                   "nosuch-view), or use --view-group");
    }
}

TEST_F(ServicePeer, membersMaySendEverythingAndViewersWhatIsForThem)
{
    const Admission admission({"vokcontrol"}, {"family"});
    const Peer root = {1, 0, {0}};
    const Peer member = {1, 1000, {100, 4242}};
    const Peer viewer = {1, 1001, {100, 7}};
    const Peer both = {1, 1002, {7, 4242}};
    const Peer stranger = {1, 1003, {100, 8}};
    for (const cmdsvc::Command& command : cmdsvc::kCommands) {
        const bool isForViewers = command.right == cmdsvc::Right::kView;
        EXPECT_TRUE(admission.permits(root, &command)) << command.code;
        EXPECT_TRUE(admission.permits(member, &command)) << command.code;
        EXPECT_EQ(admission.permits(viewer, &command), isForViewers) << command.code;
        EXPECT_TRUE(admission.permits(both, &command)) << command.code;
        EXPECT_FALSE(admission.permits(stranger, &command)) << command.code;
    }
    EXPECT_TRUE(admission.permits(root, nullptr));
    EXPECT_TRUE(admission.permits(member, nullptr));
    EXPECT_FALSE(admission.permits(viewer, nullptr)) << "what nobody knows may do anything";
    EXPECT_FALSE(admission.permits(stranger, nullptr));
    EXPECT_TRUE(admission.admits(viewer));
    EXPECT_FALSE(admission.admits(stranger));
}

TEST_F(ServicePeer, viewersAreAdmittedByTheirGroupAloneAndOnlyWithIt)
{
    EXPECT_FALSE(Admission({"vokcontrol"}, kNoViewers).admits({1, 1001, {7}}));
    EXPECT_TRUE(Admission({"nosuch"}, {"family"}).admits({1, 1001, {7}}));
    EXPECT_FALSE(Admission({"nosuch"}, {"family"}).admits({1, 7, {100}}));
}

TEST_F(ServicePeer, socketIsOpenToAllOnlyIfThereAreViewers)
{
    EXPECT_EQ(Admission({"vokcontrol"}, kNoViewers).socketMode(), 0660U);
    EXPECT_EQ(Admission({"vokcontrol"}, {"family"}).socketMode(), 0666U);
}

TEST_F(ServicePeer, anotherGroupIsAnotherAdmission)
{
    const Admission admission({"family", true}, kNoViewers);
    EXPECT_EQ(admission.group(), 7U);
    EXPECT_TRUE(admission.admits({1, 1000, {7}}));
    EXPECT_FALSE(admission.admits({1, 1000, {4242}}));
}

} // namespace
