// SPDX-License-Identifier: MIT
#include "view/judgement.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>

#include "tests/support/root.h"

namespace {

using config::Configuration;
using view::Backup;
using view::BackupReport;
using view::Capacity;
using view::Finding;
using view::judge;
using view::judgeBackup;
using view::Level;
using view::PublishedStatus;
using view::ShareRow;
using view::Situation;
using Strings = std::vector<std::string>;
using std::chrono::days;

constexpr std::time_t kHour = 3600;
constexpr std::time_t kNow = 1795253583; // 2026-11-21 09:33:03
const std::chrono::sys_days kToday = view::dayOf(kNow);

/// A share whose last backup is so old, with a state that is good.
ShareRow share(const std::string& name, std::optional<int> age = 0, std::optional<int> state = 1)
{
    ShareRow row = {
        .name = name, .used = view::Space{5, 'K'}, .backupState = state, .backupDay = {}};
    if (age) {
        row.backupDay = kToday - days(*age);
        row.report = BackupReport::kRead;
    }
    return row;
}

ShareRow shareWith(const std::string& name, BackupReport report)
{
    ShareRow row = share(name, std::nullopt, std::nullopt);
    row.report = report;
    return row;
}

Configuration configuration()
{
    Configuration all;
    all.goodStates = "1";
    all.failedStates = "29";
    all.words[2] = "disk full";
    return all;
}

/// All is well with these shares, if all is with them.
Situation situation(const std::vector<ShareRow>& shares = {share("Media")})
{
    ::setenv("TZ", "UTC", 1);
    ::tzset();
    Situation all;
    all.status.result = PublishedStatus::Result::kComplete;
    all.status.published = kNow - 60;
    all.status.shares = shares;
    all.capacity = Capacity{1000, 500, 500};
    all.listed = Strings{};
    all.now = kNow;
    return all;
}

/// "LEVEL KIND [SHARE...]: SENTENCE", one for each finding.
Strings describe(const Situation& situation, const Configuration& rules = configuration())
{
    Strings lines;
    for (const Finding& finding : judge(situation, rules)) {
        std::string line = std::string(view::wordOf(finding.level)) + " " + finding.kind;
        for (const std::string& name : finding.shares) {
            line += " [" + name + "]";
        }
        lines.push_back(line + ": " + finding.sentence);
    }
    return lines;
}

TEST(Judgement, findsNothingWhereAllIsWell)
{
    EXPECT_EQ(describe(situation()), Strings{});
    EXPECT_EQ(describe(situation({})), Strings{});
}

// ---- The disk ---------------------------------------------------------------------------------

Strings describeDisk(std::uint64_t used)
{
    Situation all = situation();
    all.capacity = Capacity{1000000, used, 1000000 - used};
    return describe(all);
}

TEST(Judgement, diskIsFullFromItsThresholdsOn)
{
    const std::string advice = " free: delete what is not needed, or move it elsewhere.";
    EXPECT_EQ(describeDisk(890000), Strings{}) << "89 %, below the first";
    EXPECT_EQ(describeDisk(900000),
              Strings{"warning full: The disk is 90 % full, with 100 MB" + advice});
    EXPECT_EQ(describeDisk(940000),
              Strings{"warning full: The disk is 94 % full, with 60 MB" + advice});
    EXPECT_EQ(describeDisk(950000),
              Strings{"critical full: The disk is 95 % full, with 50 MB" + advice});
    EXPECT_EQ(describeDisk(1000000),
              Strings{"critical full: The disk is 100 % full, with 0 KB" + advice});
}

TEST(Judgement, thresholdsOfTheDiskAreConfigured)
{
    Situation all = situation();
    all.capacity = Capacity{100, 60, 40};
    Configuration rules = configuration();
    rules.fullWarning = 60;
    rules.fullCritical = 61;
    EXPECT_EQ(view::worstOf(judge(all, rules)), Level::kWarning);
    rules.fullCritical = 60;
    EXPECT_EQ(view::worstOf(judge(all, rules)), Level::kCritical);
    rules.fullWarning = 61;
    EXPECT_EQ(view::worstOf(judge(all, rules)), Level::kFine);
}

TEST(Judgement, diskOfUnknownSizeIsNeitherFullNorEmpty)
{
    Situation all = situation();
    all.capacity.reset();
    EXPECT_EQ(describe(all), Strings{});
}

// ---- The collection ---------------------------------------------------------------------------

TEST(Judgement, statusThatIsNotThereIsAskedFor)
{
    Situation all = situation({});
    all.status = {};
    EXPECT_EQ(describe(all),
              Strings{"warning no-status: No share has been measured yet: start a collection."});
    all.status.result = PublishedStatus::Result::kDamaged;
    EXPECT_EQ(describe(all), Strings{"warning damaged: The share status is damaged: start a "
                                     "collection, which replaces it."});
    all.status.result = PublishedStatus::Result::kNoList;
    all.status.published = kNow;
    all.listed = Strings{"-x"};
    EXPECT_EQ(describe(all),
              Strings{"critical no-list: The last collection could not get the list of shares: see "
                      "that the appliance's share script works, then start another one."});
}

TEST(Judgement, statusThatCannotBeReadIsNotMissing)
{
    Situation all = situation({});
    all.status = {};
    all.status.error = ENOENT;
    EXPECT_EQ(judge(all, configuration()).at(0).kind, std::string("no-status"));
    all.status.error = EACCES;
    EXPECT_EQ(describe(all), Strings{"warning status-unreadable: The share status cannot be read: "
                                     "Permission denied."});
    all.status.error = EISDIR;
    all.status.result = PublishedStatus::Result::kDamaged;
    EXPECT_EQ(describe(all),
              Strings{"warning status-unreadable: The share status cannot be read: Is "
                      "a directory."});
}

TEST(Judgement, statusIsStaleWhenItIsOlderThanAllowed)
{
    Situation all = situation();
    const std::string advice = ": start a collection, and see why none has ended since.";
    all.status.published = kNow - 24 * kHour + 1;
    EXPECT_EQ(describe(all), Strings{});
    all.status.published = kNow - 24 * kHour;
    EXPECT_EQ(describe(all), Strings{});
    all.status.published = kNow - 24 * kHour - 1;
    EXPECT_EQ(describe(all),
              Strings{"warning stale: The shares were last measured 24 hours ago" + advice});
    Configuration rules = configuration();
    rules.stale = 25;
    EXPECT_EQ(describe(all, rules), Strings{});
    all.status.published = kNow + kHour;
    EXPECT_EQ(describe(all), Strings{}) << "in the future";
}

TEST(Judgement, interruptedCollectionHoldsOthersUpForTwoHours)
{
    Situation all = situation();
    const std::string root = ", or at once if root first removes "
                             "/etc/pelconfig/vokcontrol/__shrsem.";
    all.status.isInterrupted = true;
    all.status.collectingSince = kNow - 1800;
    EXPECT_EQ(describe(all),
              Strings{"warning interrupted: The collection that began 30 minutes ago was "
                      "interrupted. Another one can start in 91 minutes" +
                      root});
    all.status.collectingSince = kNow - 7199;
    EXPECT_EQ(describe(all),
              Strings{"warning interrupted: The collection that began 1 hour ago was "
                      "interrupted. Another one can start in 1 minute" +
                      root});
    all.status.collectingSince = kNow - 7200;
    EXPECT_EQ(describe(all),
              Strings{"warning interrupted: The collection that began 2 hours ago was "
                      "interrupted: start another one."});
    all.status.isInterrupted = false;
    EXPECT_EQ(describe(all), Strings{}) << "it runs";
}

// ---- Shares that are not measured -------------------------------------------------------------

TEST(Judgement, sharesThatAreNotMeasuredAreNamedWithTheReason)
{
    ShareRow failed = share("Gone");
    failed.used.reset();
    Situation all = situation({share("Media"), failed});
    all.listed = Strings{"-x", "Gone", "Media", "a$", "b,c", "d`"};
    EXPECT_EQ(
        describe(all),
        (Strings{
            "warning must-be-renamed [a$] [d`]: a$, d` are not measured: each name could run a "
            "command in a shell. Rename them, without any of \" $ `, a backslash or a newline.",
            "warning must-be-renamed [b,c]: b,c is not measured: its name has a comma or the "
            "bracket ]. Rename it.",
            "warning must-be-renamed [-x]: -x is not measured: its name begins with a character "
            "that the collector passes over. Rename it, with a letter or a digit at the start.",
            "warning unmeasured [Gone]: Gone is not measured: its folder could not be measured. "
            "See whether it is in /share."}));
}

TEST(Judgement, sharesBeyondTheEndOfAStatusAreNamed)
{
    std::vector<ShareRow> shares;
    for (char c = 0; c < 53; ++c) {
        shares.push_back(share(std::string(63, 'n') + static_cast<char>('A' + c)));
    }
    Situation all = situation(shares);
    all.listed = Strings{"1", "2", "3", "4", "5", "6", "7"};
    EXPECT_EQ(describe(all),
              Strings{"warning unmeasured [1] [2] [3] [4] [5] [6] [7]: 1, 2, 3, 4, 5 and 2 more "
                      "are not measured: a status has 4096 bytes, and there is no room left for "
                      "them. Give shares shorter names, or have fewer."});
}

TEST(Judgement, disksComeBeforeWhatIsOnThem)
{
    Situation all = situation();
    all.capacity = Capacity{1000, 950, 50};
    all.arrays = {{.name = "md0", .level = "raid1", .isRunning = true, .wanted = 2, .working = 1}};
    EXPECT_EQ(
        describe(all),
        (Strings{"critical array-degraded: The disk array md0 works with 1 of 2 disks: attach "
                 "or replace the missing one. If another disk fails, data may be lost.",
                 "critical full: The disk is 95 % full, with 50 KB free: delete what is not "
                 "needed, or move it elsewhere."}));
}

// ---- Backups ----------------------------------------------------------------------------------

Backup backupOf(const ShareRow& row, const Configuration& rules = configuration())
{
    return judgeBackup(row, rules, kToday);
}

TEST(Judgement, backupIsOldWhenItIsOlderThanAllowed)
{
    EXPECT_EQ(backupOf(share("x", 0)), Backup::kGood);
    EXPECT_EQ(backupOf(share("x", 6)), Backup::kGood);
    EXPECT_EQ(backupOf(share("x", 7)), Backup::kGood);
    EXPECT_EQ(backupOf(share("x", 8)), Backup::kOld);
    Configuration rules = configuration();
    rules.backupAge = 8;
    EXPECT_EQ(backupOf(share("x", 8), rules), Backup::kGood);
    EXPECT_EQ(backupOf(share("x", 9), rules), Backup::kOld);
}

TEST(Judgement, backupMayBeOfTomorrowAndNoLater)
{
    EXPECT_EQ(backupOf(share("x", -1)), Backup::kGood);
    EXPECT_EQ(backupOf(share("x", -2)), Backup::kInFuture);
}

TEST(Judgement, stateSaysWhatItIsConfiguredToSay)
{
    EXPECT_EQ(backupOf(share("x", 0, 1)), Backup::kGood);
    EXPECT_EQ(backupOf(share("x", 0, 2)), Backup::kFailed);
    EXPECT_EQ(backupOf(share("x", 99, 9)), Backup::kFailed) << "however old";
    EXPECT_EQ(backupOf(share("x", 0, 0)), Backup::kUnexplained);
    EXPECT_EQ(backupOf(share("x", 99, 0)), Backup::kOld);
    EXPECT_EQ(backupOf(share("x", 0, std::nullopt)), Backup::kUnexplained);
    for (int state = 0; state <= 9; ++state) {
        EXPECT_EQ(backupOf(share("x", 0, state), Configuration()), Backup::kUnexplained) << state;
    }
}

TEST(Judgement, stateHasItsDigitAndItsWord)
{
    EXPECT_EQ(view::formatState(1, configuration()), "1");
    EXPECT_EQ(view::formatState(2, configuration()), "2 (disk full)");
}

TEST(Judgement, reportThatCannotBeReadIsThere)
{
    EXPECT_EQ(backupOf(shareWith("x", BackupReport::kNone)), Backup::kNone);
    EXPECT_EQ(backupOf(shareWith("x", BackupReport::kUnreadable)), Backup::kUnreadable);
    EXPECT_EQ(backupOf(shareWith("x", BackupReport::kNewer)), Backup::kNewer);
}

TEST(Judgement, backupsThatNeedSomebodyAreNamed)
{
    const Situation all = situation(
        {share("Good"), share("Failed", 6, 2), shareWith("Never", BackupReport::kNone),
         share("Old", 40), shareWith("Odd", BackupReport::kUnreadable), share("Future", -9),
         shareWith("Newer", BackupReport::kNewer), shareWith("Empty", BackupReport::kNone),
         share("Unexplained", 3, 5), share("Bad", 0, 9)});
    EXPECT_EQ(
        describe(all),
        (Strings{
            "critical backup-failed [Failed]: The backup of Failed on 15 November 2026 has "
            "failed with state 2 (disk full): see why, and back up again.",
            "critical backup-failed [Bad]: The backup of Bad on 21 November 2026 has failed "
            "with state 9: see why, and back up again.",
            "warning backup-unreadable [Odd]: 1 of 10 shares has a backup report that cannot be "
            "read: Odd. What to do: have the backup reported again.",
            "warning backup-in-future [Future]: 1 of 10 shares has a backup of a day that is "
            "still to come: Future. What to do: set the clock right, then back up again.",
            "warning backup-old [Old]: 1 of 10 shares has an old backup: Old. What to do: back "
            "up again.",
            "warning no-backup [Never] [Empty]: 2 of 10 shares have never been backed up: "
            "Never, Empty. What to do: set up a backup."}));
}

// ---- Order ------------------------------------------------------------------------------------

TEST(Judgement, worstComesFirst)
{
    Situation all = situation({shareWith("Media", BackupReport::kNone), share("Photos", 0, 2)});
    all.capacity = Capacity{1000, 900, 100};
    const std::vector<Finding> findings = judge(all, configuration());
    Strings kinds;
    for (const Finding& finding : findings) {
        kinds.emplace_back(finding.kind);
    }
    EXPECT_EQ(kinds, (Strings{"backup-failed", "full", "no-backup"}));
    EXPECT_EQ(view::worstOf(findings), Level::kCritical);
    EXPECT_EQ(view::worstOf({}), Level::kFine);
    EXPECT_STREQ(view::wordOf(Level::kFine), "fine");
}

// ---- Looking ----------------------------------------------------------------------------------

class Looking : public root::UntracedTest {};

TEST_F(Looking, allIsReadAtOnce)
{
    std::filesystem::create_directory("/share/Media");
    const std::time_t before = std::time(nullptr);
    const Situation all = view::readSituation();
    EXPECT_EQ(all.status.result, PublishedStatus::Result::kNone);
    EXPECT_EQ(all.capacity->total, view::readCapacity()->total);
    EXPECT_EQ(all.listed, Strings{"Media"});
    EXPECT_GE(all.now, before);
    EXPECT_LE(all.now, std::time(nullptr));
}

} // namespace
