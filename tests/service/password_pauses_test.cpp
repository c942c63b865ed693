// SPDX-License-Identifier: MIT
#include "service/password_pauses.h"

#include <gtest/gtest.h>
#include <vector>

#include "tests/support/request.h"
#include "tests/support/root.h"

namespace {

using request::frame;
using root::le32;
using service::PasswordPauses;
using std::chrono::milliseconds;
using std::chrono::seconds;

const std::string kWrong = "erro " + le32(1);
const std::string kRight = "wall \n";
constexpr uid_t kUser = 1000;

class Pauses : public testing::Test {
  protected:
    PasswordPauses pauses{seconds(16)};
    PasswordPauses::Clock::time_point now;

    /// The pauses after so many wrong passwords, each of them waited for.
    std::vector<int> failOften(int times)
    {
        std::vector<int> found;
        for (int i = 0; i < times; ++i) {
            pauses.judge(kUser, kWrong, now);
            const milliseconds pause = pauses.remaining(kUser, now);
            found.push_back(static_cast<int>(pause.count()));
            now += pause;
        }
        return found;
    }
};

TEST_F(Pauses, pauseDoublesUpToItsLimit)
{
    EXPECT_EQ(pauses.remaining(kUser, now), milliseconds(0));
    EXPECT_EQ(failOften(8), (std::vector<int>{500, 1000, 2000, 4000, 8000, 16000, 16000, 16000}));
    EXPECT_EQ(pauses.remaining(kUser, now), milliseconds(0)) << "it has been waited for";
}

TEST_F(Pauses, timeThatHasPassedCounts)
{
    pauses.judge(kUser, kWrong, now);
    EXPECT_EQ(pauses.remaining(kUser, now + milliseconds(300)), milliseconds(200));
}

TEST_F(Pauses, otherUsersDoNotWait)
{
    failOften(3);
    pauses.judge(kUser, kWrong, now);
    EXPECT_EQ(pauses.remaining(kUser + 1, now), milliseconds(0));
}

TEST_F(Pauses, rightPasswordEndsThem)
{
    failOften(3);
    pauses.judge(kUser, kRight, now);
    EXPECT_EQ(failOften(2), (std::vector<int>{500, 1000}));
}

TEST_F(Pauses, theyAreForgottenAfterFiveMinutes)
{
    failOften(3);
    now += seconds(297);
    EXPECT_EQ(failOften(1), std::vector<int>{4000}) << "two seconds of pause are in it";
    now += seconds(297);
    EXPECT_EQ(failOften(2), (std::vector<int>{500, 1000}));
}

TEST_F(Pauses, otherAnswersChangeNothing)
{
    pauses.judge(kUser, kWrong, now);
    for (const std::string& answer : {std::string(), le32(0xFF000003), "erro " + le32(2),
                                      "serv " + le32(0x53000001) + std::string(1, '\0')}) {
        pauses.judge(kUser, answer, now);
        EXPECT_EQ(pauses.remaining(kUser, now), milliseconds(500));
    }
}

TEST(PasswordPauses, withoutALengthThereAreNone)
{
    PasswordPauses none{milliseconds(0)};
    const PasswordPauses::Clock::time_point now;
    none.judge(kUser, kWrong, now);
    EXPECT_EQ(none.remaining(kUser, now), milliseconds(0));
}

TEST(PasswordPauses, onlyWallAsksForAPassword)
{
    EXPECT_TRUE(service::isPasswordCheck(frame("wall", 2, "anna\nword\n")));
    EXPECT_TRUE(service::isPasswordCheck("wall"));
    for (const char* request : {"", "wal", "warp", "wasu", "crat", "xwall"}) {
        EXPECT_FALSE(service::isPasswordCheck(request)) << request;
    }
}

} // namespace
