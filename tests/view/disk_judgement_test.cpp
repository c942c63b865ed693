// SPDX-License-Identifier: MIT
#include "view/disk_judgement.h"

#include <gtest/gtest.h>

namespace {

using view::ArrayTask;
using view::DiskArray;
using Strings = std::vector<std::string>;

/// A mirror of two disks that work.
DiskArray mirror()
{
    return {.name = "md0", .level = "raid1", .isRunning = true, .wanted = 2, .working = 2};
}

DiskArray rebuilding(const ArrayTask& task)
{
    DiskArray array = mirror();
    array.working = 1;
    array.task = task;
    return array;
}

/// The findings, each with its level and kind.
Strings describe(const std::vector<DiskArray>& arrays)
{
    std::vector<view::Finding> findings;
    view::judgeArrays(arrays, findings);
    Strings lines;
    for (const view::Finding& finding : findings) {
        lines.push_back(std::string(view::wordOf(finding.level)) + " " + finding.kind + ": " +
                        finding.sentence);
    }
    return lines;
}

TEST(DiskJudgement, arraysThatAreWholeAreFine)
{
    DiskArray checked = mirror();
    checked.task = ArrayTask{.kind = ArrayTask::Kind::kCheck, .percent = 3};
    const DiskArray striped = {.name = "md1", .level = "raid0", .isRunning = true};
    EXPECT_EQ(describe({mirror(), checked, striped}), Strings{});
}

TEST(DiskJudgement, missingAndFailedDisksAreToBeReplaced)
{
    DiskArray missing = mirror();
    missing.working = 1;
    DiskArray failed = missing;
    failed.failed = {"sda1", "sdb1"};
    EXPECT_EQ(
        describe({missing, failed}),
        (Strings{"critical array-degraded: The disk array md0 works with 1 of 2 disks: attach "
                 "or replace the missing one. If another disk fails, data may be lost.",
                 "critical array-degraded: The disk array md0 works with 1 of 2 disks. "
                 "Replace what has failed: sda1, sdb1. If another disk fails, data may be "
                 "lost."}));
}

TEST(DiskJudgement, rebuildingIsAWarningWithWhatIsLeft)
{
    using enum ArrayTask::Kind;
    EXPECT_EQ(
        describe({rebuilding({.kind = kRebuild, .percent = 12, .minutes = 128}),
                  rebuilding({.kind = kRebuild, .percent = 99, .minutes = 1}),
                  rebuilding({.kind = kRebuild, .percent = 0}),
                  rebuilding({.kind = kRebuild, .isWaiting = true})}),
        (Strings{"warning array-rebuilding: The disk array md0 is being rebuilt, 12 % done, about "
                 "128 minutes left: leave the appliance on. If another disk fails before it is "
                 "done, data may be lost.",
                 "warning array-rebuilding: The disk array md0 is being rebuilt, 99 % done, about "
                 "1 minute left: leave the appliance on. If another disk fails before it is done, "
                 "data may be lost.",
                 "warning array-rebuilding: The disk array md0 is being rebuilt, 0 % done: leave "
                 "the appliance on. If another disk fails before it is done, data may be lost.",
                 "warning array-rebuilding: The disk array md0 waits to be rebuilt: leave the "
                 "appliance on. If another disk fails before it is done, data may be lost."}));
}

TEST(DiskJudgement, otherTasksDoNotHideThatADiskIsMissing)
{
    EXPECT_EQ(describe({rebuilding({.kind = ArrayTask::Kind::kCheck, .percent = 12})}),
              Strings{"critical array-degraded: The disk array md0 works with 1 of 2 disks: attach "
                      "or replace the missing one. If another disk fails, data may be lost."});
}

TEST(DiskJudgement, arrayThatDoesNotRunIsCritical)
{
    EXPECT_EQ(describe({{.name = "md127"}}),
              Strings{"critical array-stopped: The disk array md127 does not run: see that all of "
                      "its disks are attached, then restart the appliance."});
}

TEST(DiskJudgement, failedDiskIsReplacedEvenIfASpareOneStandsIn)
{
    DiskArray array = mirror();
    array.failed = {"sdc1"};
    EXPECT_EQ(describe({array}),
              Strings{"warning disk-failed: The disk array md0 has all the disks that it needs. "
                      "Replace what has failed: sdc1."});
}

} // namespace
