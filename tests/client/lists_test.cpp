// SPDX-License-Identifier: MIT
#include "client/lists.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "client/failure.h"
#include "tests/page/service.h"

namespace {

using client::Connection;
using root::le32;

const std::string kUnreadable = "the answer cannot be read: ";

Connection connection()
{
    return {.socket = FakeService::kSocket, .timeout = 20};
}

class Lists : public root::UntracedTest {};

/// The shares as "NAME=PROPERTY", after the number of the internal ones.
std::vector<std::string> sharesAsTexts()
{
    const client::ShareList list = client::fetchShares(connection());
    std::vector<std::string> texts = {std::to_string(list.internal)};
    for (const client::Share& share : list.shares) {
        texts.push_back(share.name + "=" + share.property);
    }
    return texts;
}

template <class Function> std::string complaintOf(Function function)
{
    try {
        function();
    } catch (const client::Failure& failure) {
        return failure.what();
    }
    return "none";
}

TEST_F(Lists, sharesComeWithTheirProperties)
{
    const FakeService service({"lsst " + le32(1) + "\nTwo words\npublic\nUSB Stick\nprivate\n",
                               "lsst " + le32(0) + "\n"});
    EXPECT_EQ(sharesAsTexts(),
              (std::vector<std::string>{"1", "Two words=public", "USB Stick=private"}));
    EXPECT_EQ(sharesAsTexts(), std::vector<std::string>{"0"});
    EXPECT_EQ(FakeService::frames(), "lsts " + le32(0) + "\nlsts " + le32(0) + "\n");
}

TEST_F(Lists, shareWithoutAPropertyIsNoShare)
{
    const FakeService service({"lsst " + le32(1) + "\nMusic\n"});
    EXPECT_EQ(complaintOf([] { (void)client::fetchShares(connection()); }),
              kUnreadable + "\"lsst\" with count 1\n  Music");
}

TEST_F(Lists, publicShareHasANameOrNone)
{
    const FakeService service({"gpsr " + le32(1) + "\nDocuments\n", "gpsr " + le32(1) + "\n\n",
                               "gpsr " + le32(1) + "\none\ntwo\n"});
    EXPECT_EQ(client::fetchPublicName(connection()), "Documents");
    EXPECT_EQ(client::fetchPublicName(connection()), "");
    EXPECT_EQ(complaintOf([] { (void)client::fetchPublicName(connection()); }),
              kUnreadable + "\"gpsr\" with count 1\n  one\n  two");
    const std::string frame = "gps1 " + le32(0) + "\n";
    EXPECT_EQ(FakeService::frames(), frame + frame + frame);
}

TEST_F(Lists, usersAreAsManyAsIsSaid)
{
    const FakeService service(
        {"lsut " + le32(2) + "\nanna\nbob\n", "lsut " + le32(3) + "\nanna\n"});
    EXPECT_EQ(client::fetchUsers(connection()), (std::vector<std::string>{"anna", "bob"}));
    EXPECT_EQ(complaintOf([] { (void)client::fetchUsers(connection()); }),
              kUnreadable + "\"lsut\" with count 3\n  anna");
    EXPECT_EQ(FakeService::frames(), "lstu " + le32(0) + "\nlstu " + le32(0) + "\n");
}

TEST_F(Lists, listThatCouldNotBeHadIsNoEmptyOne)
{
    const FakeService service({"erro " + le32(0xFF000004), "erro " + le32(0xFF000005)});
    EXPECT_EQ(
        complaintOf([] { (void)client::fetchShares(connection()); }),
        "A script or a tool of the appliance has failed; vokctl doctor may say why. (0xFF000004)");
    EXPECT_EQ(complaintOf([] { (void)client::fetchUsers(connection()); }),
              "The appliance's list of users cannot be found. (0xFF000005)");
}

} // namespace
