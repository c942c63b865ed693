// SPDX-License-Identifier: MIT
#include "page/sessions.h"

#include <chrono>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "page/digest.h"
#include "page/private_files.h"
#include "page/token.h"
#include "tests/support/root.h"

namespace {

using page::Session;
using page::Sessions;
using page::Time;
using std::chrono::hours;
using std::chrono::minutes;

constexpr Time kStart{100'000};
const std::string kFolder = "/tmp/state/sessions";

class SessionStore : public root::Test {
  protected:
    static Sessions sessions() { return Sessions("/tmp/state"); }

    static bool isAlive(const std::string& token, Time now)
    {
        return sessions().find(token, now).has_value();
    }
};

TEST_F(SessionStore, sessionIsFoundByItsToken)
{
    const std::string token = sessions().begin("Élise the second", kStart);
    EXPECT_TRUE(page::isToken(token));
    const std::optional<Session> session = sessions().find(token, kStart);
    ASSERT_TRUE(session);
    EXPECT_EQ(session->account, "Élise the second");
    EXPECT_TRUE(page::isToken(session->formToken));
    EXPECT_NE(session->formToken, token);
    EXPECT_EQ(sessions().find(token, kStart)->formToken, session->formToken) << "it stays";
}

TEST_F(SessionStore, listingOfTheFolderGivesNoToken)
{
    const std::string token = sessions().begin("anna", kStart);
    EXPECT_EQ(root::list(kFolder), std::vector<std::string>{page::digestOf(token)});
    const std::optional<Session> session = sessions().find(token, kStart);
    EXPECT_EQ(root::readFile(kFolder + "/" + page::digestOf(token)),
              "000000100000\n000000100000\n" + session->formToken + "\nanna\n");
}

TEST_F(SessionStore, otherTokensFindNothing)
{
    (void)sessions().begin("anna", kStart);
    for (const std::string& token :
         {std::string(), std::string(32, '0'), std::string("../../etc/passwd")}) {
        EXPECT_FALSE(isAlive(token, kStart)) << token;
    }
}

TEST_F(SessionStore, idleSessionEnds)
{
    const std::string token = sessions().begin("anna", kStart);
    EXPECT_TRUE(isAlive(token, kStart + minutes(30) - Time(1)));
    EXPECT_TRUE(isAlive(token, kStart + minutes(59))) << "it was used";
    EXPECT_FALSE(isAlive(token, kStart + minutes(89)));
    EXPECT_FALSE(isAlive(token, kStart)) << "it is gone";
    EXPECT_EQ(root::list(kFolder), std::vector<std::string>{});
}

TEST_F(SessionStore, usedSessionEndsInTheEnd)
{
    const std::string token = sessions().begin("anna", kStart);
    Time now = kStart;
    for (; now < kStart + hours(12); now += minutes(29)) {
        ASSERT_TRUE(isAlive(token, now)) << now.count();
    }
    EXPECT_FALSE(isAlive(token, kStart + hours(12)));
}

TEST_F(SessionStore, timesToComeAreNotBelieved)
{
    const std::string token = sessions().begin("anna", kStart);
    EXPECT_FALSE(isAlive(token, kStart - Time(1)));
}

TEST_F(SessionStore, sessionThatIsEndedIsGone)
{
    const std::string token = sessions().begin("anna", kStart);
    const std::string other = sessions().begin("anna", kStart);
    sessions().end(token);
    EXPECT_FALSE(isAlive(token, kStart));
    EXPECT_TRUE(isAlive(other, kStart));
}

TEST_F(SessionStore, damagedFileIsNoSession)
{
    const std::string token = sessions().begin("anna", kStart);
    const std::string path = kFolder + "/" + page::digestOf(token);
    const std::string whole = root::readFile(path);
    for (const std::string& damaged :
         {std::string(), whole.substr(0, 58), whole.substr(0, whole.size() - 1),
          "x" + whole.substr(1), whole.substr(0, 12) + " " + whole.substr(13)}) {
        page::replacePrivateFile(path, damaged);
        EXPECT_FALSE(isAlive(token, kStart)) << damaged;
    }
}

TEST_F(SessionStore, beginningOneRemovesThoseThatHaveEnded)
{
    (void)sessions().begin("anna", kStart);
    const std::string token = sessions().begin("bob", kStart + minutes(30));
    EXPECT_EQ(root::list(kFolder), std::vector<std::string>{page::digestOf(token)});
}

TEST_F(SessionStore, leastLatelyUsedMakesRoom)
{
    std::vector<std::string> tokens;
    for (std::size_t count = 0; count < Sessions::kMost; ++count) {
        tokens.push_back(sessions().begin("anna", kStart + Time(count)));
    }
    EXPECT_TRUE(isAlive(tokens[0], kStart + minutes(5)));
    (void)sessions().begin("bob", kStart + minutes(5));
    EXPECT_FALSE(isAlive(tokens[1], kStart + minutes(5)));
    EXPECT_TRUE(isAlive(tokens[0], kStart + minutes(5)));
    EXPECT_TRUE(isAlive(tokens[2], kStart + minutes(5)));
    EXPECT_EQ(root::list(kFolder).size(), Sessions::kMost);
}

} // namespace
