// SPDX-License-Identifier: MIT
#include "page/public_share.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/page/service.h"

namespace {

using page::PublicShare;
using root::le32;
using State = PublicShare::State;

const std::string kShares =
    "lsst " + le32(2) + "\nMusic\npublic\nPapers\nprivate\nOdd\nsomething\n";
const std::string kAskForShares = "lsts " + le32(0) + "\n";
const std::string kCreate = "pshr " + le32(3) + "\nguest\nNew\n";

class PublicShares : public root::UntracedTest {
  protected:
    static client::Connection connection()
    {
        return {.socket = FakeService::kSocket, .timeout = 20};
    }
};

void expectSame(const PublicShare& one, const PublicShare& other)
{
    EXPECT_EQ(one.state, other.state);
    EXPECT_EQ(one.name, other.name);
    EXPECT_EQ(one.words, other.words);
}

TEST_F(PublicShares, areFoundWhateverTheCase)
{
    const std::string words =
        "There is a share of this name already, but not everybody may use it. "
        "Choose another name.";
    const FakeService service({kShares, kShares, kShares, kShares});
    expectSame(page::findPublicShare(connection(), "MUSIC"), {State::kThere, "Music"});
    expectSame(page::findPublicShare(connection(), "papers"), {State::kBadName, "Papers", words});
    expectSame(page::findPublicShare(connection(), "Odd"), {State::kBadName, "Odd", words});
    expectSame(page::findPublicShare(connection(), "Musi"), {State::kNew, "Musi"});
}

TEST_F(PublicShares, newOneIsCreated)
{
    const FakeService service({kShares, le32(0)});
    expectSame(page::providePublicShare(connection(), "New"), {State::kCreated, "New"});
    EXPECT_EQ(FakeService::frames(), kAskForShares + kCreate);
}

TEST_F(PublicShares, oneThatIsThereIsNotCreated)
{
    const FakeService service({kShares, le32(0)});
    expectSame(page::providePublicShare(connection(), "music"), {State::kThere, "Music"});
    EXPECT_EQ(FakeService::frames(), kAskForShares);
}

TEST_F(PublicShares, refusalOfTheNameAsksForAnother)
{
    const FakeService service(
        {kShares, le32(0xFF000003), kShares, le32(0x20000001), kShares, le32(0x20000003)});
    for (const char* words :
         {"The share's name has a character that cannot be used, such as a quote or a slash, one "
          "of : , = %, a blank at an end, or - @ + . at its start.",
          "A share of this name exists already, or the name is reserved.",
          "The share's name is longer than 64 bytes."}) {
        expectSame(page::providePublicShare(connection(), "New"), {State::kBadName, "New", words});
    }
}

TEST_F(PublicShares, otherFailuresAreNotTheNames)
{
    {
        const FakeService service({"erro " + le32(0xFF000004), kShares, le32(0xFF000004)});
        expectSame(page::findPublicShare(connection(), "New"),
                   {State::kFailed, "New",
                    "A script or a tool of the appliance has failed; vokctl doctor may say why."});
        expectSame(
            page::providePublicShare(connection(), "New"),
            {State::kFailed, "New",
             "The appliance's share script did not create this share; vokctl doctor may say why."});
    }
    testing::internal::CaptureStderr();
    expectSame(
        page::providePublicShare(connection(), "New"),
        {State::kFailed, "New", "The appliance's service does not answer. Try again in a minute."});
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "vokpage: cannot reach the service at /tmp/service: No such file or directory. Is "
              "vokserve running?\n");
}

} // namespace
