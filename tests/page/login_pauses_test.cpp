// SPDX-License-Identifier: MIT
#include "page/login_pauses.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "page/private_files.h"
#include "tests/support/root.h"

namespace {

using page::LoginPauses;
using page::Time;

constexpr Time kStart{100'000};

class Pauses : public root::Test {
  protected:
    static LoginPauses pauses() { return LoginPauses("/tmp/state"); }

    /// How long an attempt has to wait, in seconds; 0 if it is made, and wrong.
    static Time::rep attempt(const std::string& account, Time now)
    {
        return pauses().attempt(account, now).count();
    }
};

TEST_F(Pauses, eachWrongPasswordDoublesTheNextPause)
{
    Time now = kStart;
    std::vector<Time::rep> waits;
    for (int count = 0; count < 9; ++count) {
        EXPECT_EQ(attempt("anna", now), 0);
        waits.push_back(attempt("anna", now));
        now += Time(waits.back());
    }
    EXPECT_EQ(waits, (std::vector<Time::rep>{1, 2, 4, 8, 16, 32, 64, 64, 64}));
}

TEST_F(Pauses, attemptThatHasToWaitDoesNotMakeItLonger)
{
    EXPECT_EQ(attempt("anna", kStart), 0);
    EXPECT_EQ(attempt("anna", kStart), 1);
    EXPECT_EQ(attempt("anna", kStart), 1);
    EXPECT_EQ(attempt("anna", kStart + Time(1)), 0);
}

TEST_F(Pauses, otherAccountsDoNotWait)
{
    EXPECT_EQ(attempt("anna", kStart), 0);
    EXPECT_EQ(attempt("bob", kStart), 0);
    EXPECT_EQ(attempt("ANNA", kStart), 1) << "the same account, as the check of its password goes";
}

TEST_F(Pauses, rightPasswordEndsThePausesOfItsAccount)
{
    EXPECT_EQ(attempt("anna", kStart), 0);
    EXPECT_EQ(attempt("anna", kStart + Time(1)), 0);
    pauses().succeeded("Anna", kStart + Time(1));
    EXPECT_EQ(attempt("anna", kStart + Time(1)), 0);
    EXPECT_EQ(attempt("anna", kStart + Time(1)), 1) << "it begins anew";
}

TEST_F(Pauses, manyWrongPasswordsSlowEverybodyDown)
{
    for (int count = 0; count < 10; ++count) {
        EXPECT_EQ(attempt("account " + std::to_string(count), kStart), 0) << count;
    }
    EXPECT_EQ(attempt("account 11", kStart), 0) << "ten are free";
    EXPECT_EQ(attempt("account 12", kStart), 1);
    Time now = kStart + Time(1);
    std::vector<Time::rep> waits;
    for (int count = 0; count < 6; ++count) {
        EXPECT_EQ(attempt("further " + std::to_string(count), now), 0);
        waits.push_back(attempt("last", now));
        now += Time(waits.back());
    }
    EXPECT_EQ(waits, (std::vector<Time::rep>{2, 4, 8, 16, 16, 16}));
}

TEST_F(Pauses, rightPasswordsSlowNobodyDown)
{
    for (int count = 0; count < 50; ++count) {
        EXPECT_EQ(attempt("anna", kStart), 0) << count;
        pauses().succeeded("anna", kStart);
    }
}

TEST_F(Pauses, allIsForgottenInTheEnd)
{
    EXPECT_EQ(attempt("anna", kStart), 0);
    EXPECT_EQ(attempt("anna", kStart + Time(1)), 0);
    const Time later = kStart + Time(1) + std::chrono::minutes(15);
    EXPECT_EQ(attempt("anna", later), 0);
    EXPECT_EQ(attempt("anna", later), 1);
}

TEST_F(Pauses, fileHoldsNoNamesAndStaysSmall)
{
    for (int count = 0; count < 3000; ++count) {
        (void)attempt("account " + std::to_string(count), kStart + Time(count));
    }
    const std::string content = root::readFile("/tmp/state/pauses");
    EXPECT_EQ(content.find("account"), std::string::npos);
    EXPECT_LE(std::count(content.begin(), content.end(), '\n'), 80);
    EXPECT_EQ(root::list("/tmp/state"), (std::vector<std::string>{"pauses", "pauses.lock"}));
}

} // namespace
