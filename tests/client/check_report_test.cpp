// SPDX-License-Identifier: MIT
#include "client/check_report.h"

#include <gtest/gtest.h>

#include "tests/support/root.h"

namespace {

using client::renderCheck;
using config::Configuration;
using view::PublishedStatus;
using view::ShareRow;
using view::Situation;

constexpr std::time_t kNow = 1795253583;

ShareRow share(const std::string& name, int state = 1)
{
    return {.name = name,
            .used = view::Space{5, 'K'},
            .backupState = state,
            .backupDay = view::dayOf(kNow),
            .report = view::BackupReport::kRead};
}

Situation situation(const std::vector<ShareRow>& shares = {share("Media")})
{
    Situation all;
    all.status.result = PublishedStatus::Result::kComplete;
    all.status.published = kNow - 60;
    all.status.shares = shares;
    all.capacity = view::Capacity{500000000, 312000000, 188000000};
    all.listed = std::vector<std::string>{};
    all.now = kNow;
    return all;
}

Configuration configuration()
{
    Configuration all;
    all.failedStates = "2";
    return all;
}

/// The line with its code in front.
std::string check(const Situation& situation)
{
    const client::CheckReport report = renderCheck(situation, configuration());
    return std::to_string(report.code) + " " + report.line;
}

const std::string kDisk =
    " | used=312000000KB;450000000;475000000;0;500000000 full=63%;89;94;0;100";

TEST(CheckReport, okIsSaidWithTheFigures)
{
    EXPECT_EQ(check(situation()), "0 VOKCONTROL OK - 312 of 500 GB used, 188 GB free" + kDisk +
                                      " age=60s;86400 shares=1 unmeasured=0;0\n");
}

TEST(CheckReport, warningIsSaidWithWhatToDo)
{
    Situation all = situation({share("Media"), share("Photos")});
    all.listed = std::vector<std::string>{"-x"};
    EXPECT_EQ(check(all),
              "1 VOKCONTROL WARNING - -x is not measured: its name begins with a character that "
              "the collector passes over. Rename it, with a letter or a digit at the start." +
                  kDisk + " age=60s;86400 shares=2 unmeasured=1;0\n");
}

TEST(CheckReport, worstOfAllCountsAndComesFirst)
{
    Situation all = situation({share("Media"), share("Photos", 2)});
    all.status.shares[0].report = view::BackupReport::kNone;
    EXPECT_EQ(check(all),
              "2 VOKCONTROL CRITICAL - The backup of Photos on 21 November 2026 has "
              "failed with state 2: see why, and back up again. 1 of 2 shares has never "
              "been backed up: Media. What to do: set up a backup." +
                  kDisk + " age=60s;86400 shares=2 unmeasured=0;0\n");
}

TEST(CheckReport, statusThatIsNotKnownIsNoWarning)
{
    Situation all = situation({});
    all.status = {};
    EXPECT_EQ(check(all), "3 VOKCONTROL UNKNOWN - No share has been measured yet: start a "
                          "collection." +
                              kDisk + "\n");
    all.status.result = PublishedStatus::Result::kDamaged;
    EXPECT_EQ(check(all), "3 VOKCONTROL UNKNOWN - The share status is damaged: start a collection, "
                          "which replaces it." +
                              kDisk + "\n");
    all.status.error = EISDIR;
    EXPECT_EQ(check(all),
              "3 VOKCONTROL UNKNOWN - The share status cannot be read: Is a directory." + kDisk +
                  "\n");
}

TEST(CheckReport, whatIsWrongForCertainIsWorseThanWhatIsNotKnown)
{
    Situation all = situation({});
    all.status = {};
    all.capacity = view::Capacity{1000, 960, 40};
    EXPECT_EQ(renderCheck(all, configuration()).code, 2);
    all.capacity = view::Capacity{1000, 910, 90};
    EXPECT_EQ(renderCheck(all, configuration()).code, 1);
}

TEST(CheckReport, capacityThatIsNotKnownIsNotFine)
{
    Situation all = situation();
    all.capacity.reset();
    EXPECT_EQ(check(all),
              "3 VOKCONTROL UNKNOWN - The disk's capacity is not known. | age=60s;86400 "
              "shares=1 unmeasured=0;0\n");
    all.status.shares[0].report = view::BackupReport::kNone;
    EXPECT_EQ(check(all),
              "1 VOKCONTROL WARNING - 1 of 1 share has never been backed up: Media. What "
              "to do: set up a backup. The disk's capacity is not known. | age=60s;86400 "
              "shares=1 unmeasured=0;0\n");
}

TEST(CheckReport, listThatWasNotToBeHadIsCritical)
{
    Situation all = situation({});
    all.status.result = PublishedStatus::Result::kNoList;
    EXPECT_EQ(check(all), "2 VOKCONTROL CRITICAL - The last collection could not get the list of "
                          "shares: see that the appliance's share script works, then start another "
                          "one." +
                              kDisk + " age=60s;86400 shares=0 unmeasured=0;0\n");
}

TEST(CheckReport, noNameBreaksTheLine)
{
    Situation all = situation({share("a|b\n\x1B", 2)});
    EXPECT_EQ(check(all), "2 VOKCONTROL CRITICAL - The backup of a\\u{7c}b\\u{a}\\u{1b} on 21 "
                          "November 2026 has failed with state 2: see why, and back up again." +
                              kDisk + " age=60s;86400 shares=1 unmeasured=0;0\n");
}

TEST(CheckReport, statusOfTheFutureHasNoAge)
{
    Situation all = situation();
    all.status.published = kNow + 60;
    EXPECT_EQ(check(all), "0 VOKCONTROL OK - 312 of 500 GB used, 188 GB free" + kDisk +
                              " age=0s;86400 shares=1 unmeasured=0;0\n");
}

TEST(CheckReport, checkThatCannotBeMadeIsUnknown)
{
    const client::CheckReport report = client::renderUnknown("it is | dark");
    EXPECT_EQ(report.code, 3);
    EXPECT_EQ(report.line, "VOKCONTROL UNKNOWN - it is \\u{7c} dark\n");
}

} // namespace
