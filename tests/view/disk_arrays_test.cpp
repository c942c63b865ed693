// SPDX-License-Identifier: MIT
#include "view/disk_arrays.h"

#include <gtest/gtest.h>

#include "tests/support/root.h"

namespace {

using view::ArrayTask;
using view::DiskArray;
using Strings = std::vector<std::string>;

const std::string kStart = "Personalities : [raid1] [raid6] [raid5] [raid4]\n";
const std::string kEnd = "unused devices: <none>\n";

std::string describe(const ArrayTask& task)
{
    constexpr auto kWords = std::to_array<const char*>({"rebuild", "check", "reshape"});
    std::string words = std::string(", ") + kWords.at(static_cast<std::size_t>(task.kind)) + " " +
                        (task.isWaiting ? "waits" : std::to_string(task.percent) + " %");
    return words + (task.minutes ? " " + std::to_string(*task.minutes) + " min" : "");
}

std::string describe(const DiskArray& array)
{
    std::string words = array.name + (array.isRunning ? " runs" : " stands") + " [" + array.level +
                        "] " + std::to_string(array.working) + "/" + std::to_string(array.wanted);
    for (const std::string& name : array.failed) {
        words += " failed:" + name;
    }
    return words + (array.isDegraded() ? " degraded" : "") +
           (array.task ? describe(*array.task) : "");
}

Strings describe(const std::vector<DiskArray>& arrays)
{
    Strings lines;
    for (const DiskArray& array : arrays) {
        lines.push_back(describe(array));
    }
    return lines;
}

/// The arrays between the first line and the last.
Strings parse(const std::string& lines)
{
    return describe(view::parseDiskArrays(kStart + lines + kEnd));
}

TEST(DiskArrays, noneAreNone)
{
    EXPECT_EQ(parse(""), Strings{});
    EXPECT_EQ(describe(view::parseDiskArrays("")), Strings{});
    EXPECT_EQ(describe(view::parseDiskArrays("Personalities : \n" + kEnd)), Strings{});
}

TEST(DiskArrays, wholeArraysHaveAllTheirDisks)
{
    EXPECT_EQ(parse("md1 : active raid5 sdd1[3] sdc1[2] sdb1[1] sda1[0]\n"
                    "      1464763392 blocks super 1.2 level 5, 512k chunk, algorithm 2 [4/4] "
                    "[UUUU]\n"
                    "      bitmap: 0/4 pages [0KB], 65536KB chunk\n"
                    "\n"
                    "md0 : active raid1 sdb1[1] sda1[0]\n"
                    "      488254464 blocks [2/2] [UU]\n"
                    "      \n"),
              (Strings{"md1 runs [raid5] 4/4", "md0 runs [raid1] 2/2"}));
}

TEST(DiskArrays, arraysWithoutSpareDataHaveNoCounts)
{
    EXPECT_EQ(parse("md0 : active raid0 sdb1[1] sda1[0]\n"
                    "      976508928 blocks super 1.2 512k chunks\n"
                    "\n"
                    "md1 : active linear sdc1[0]\n"
                    "      976508928 blocks super 1.2 0k rounding\n"),
              (Strings{"md0 runs [raid0] 0/0", "md1 runs [linear] 0/0"}));
}

TEST(DiskArrays, degradedArraysLackADisk)
{
    EXPECT_EQ(parse("md0 : active raid1 sda1[0]\n"
                    "      488254464 blocks super 1.2 [2/1] [U_]\n"),
              Strings{"md0 runs [raid1] 1/2 degraded"});
    EXPECT_EQ(parse("md0 : active raid1 sdb1[1](F) sda1[0]\n"
                    "      488254464 blocks super 1.2 [2/1] [U_]\n"),
              Strings{"md0 runs [raid1] 1/2 failed:sdb1 degraded"});
}

TEST(DiskArrays, spareAndReplacedDisksAreNotFailed)
{
    EXPECT_EQ(parse("md0 : active raid1 sdd1[4](R) sdc1[3](S) sdb1[1](W) sda1[0](J) sde1[2](F)\n"
                    "      488254464 blocks super 1.2 [2/2] [UU]\n"),
              Strings{"md0 runs [raid1] 2/2 failed:sde1"});
}

TEST(DiskArrays, rebuildingHasItsProgress)
{
    const std::string array = "md0 : active raid1 sdb1[2] sda1[0]\n"
                              "      292945152 blocks super 1.2 [2/1] [U_]\n";
    EXPECT_EQ(parse(array + "      [==>..................]  recovery = 12.6% "
                            "(37043392/292945152) finish=127.5min speed=33440K/sec\n"),
              Strings{"md0 runs [raid1] 1/2 degraded, rebuild 12 % 128 min"});
    EXPECT_EQ(parse(array + "      [>....................]  recovery =  0.0% (0/292945152) "
                            "finish=0.0min speed=0K/sec\n"),
              Strings{"md0 runs [raid1] 1/2 degraded, rebuild 0 % 0 min"});
    EXPECT_EQ(parse(array + "      [===================>.]  recovery =100.0% "
                            "(292945152/292945152) finish=0.0min speed=9K/sec\n"),
              Strings{"md0 runs [raid1] 1/2 degraded, rebuild 100 % 0 min"});
    EXPECT_EQ(parse(array + "      \trecovery=DELAYED\n"),
              Strings{"md0 runs [raid1] 1/2 degraded, rebuild waits"});
}

TEST(DiskArrays, otherTasksAreNoRebuilding)
{
    const std::string array = "md0 : active raid1 sdb1[1] sda1[0]\n"
                              "      292945152 blocks super 1.2 [2/2] [UU]\n      ";
    EXPECT_EQ(parse(array + "[=>...]  check =  8.0% (2/25) finish=3.1min speed=9K/sec\n"),
              Strings{"md0 runs [raid1] 2/2, check 8 % 4 min"});
    EXPECT_EQ(parse(array + "[=>...]  resync =  8.9% (2/25) finish=3.0min speed=9K/sec\n"),
              Strings{"md0 runs [raid1] 2/2, check 8 % 3 min"});
    EXPECT_EQ(parse(array + "[=>...]  reshape = 8.0% (2/25) finish=3min speed=9K/sec\n"),
              Strings{"md0 runs [raid1] 2/2, reshape 8 % 3 min"});
    EXPECT_EQ(parse(array + "resync=PENDING\n"), Strings{"md0 runs [raid1] 2/2, check waits"});
}

TEST(DiskArrays, mayBeReadOnlyOrStopped)
{
    EXPECT_EQ(parse("md0 : active (auto-read-only) raid1 sdb1[1] sda1[0]\n"
                    "      488254464 blocks super 1.2 [2/2] [UU]\n"
                    "      \n"
                    "md127 : inactive sdc1[1](S) sdd1[0](S)\n"
                    "      976508928 blocks super 1.2\n"
                    "\n"
                    "md2 : broken raid0 sde1[0]\n"
                    "      976508928 blocks super 1.2 512k chunks\n"),
              (Strings{"md0 runs [raid1] 2/2", "md127 stands [] 0/0", "md2 stands [raid0] 0/0"}));
}

TEST(DiskArrays, whatIsNotUnderstoodIsPassedOver)
{
    EXPECT_EQ(
        parse("      [2/1] [U_]\n"
              "md0 :\n"
              "md0 active raid1\n"
              "md1 : active raid1 sda1[0]\n"
              "      [2/] [/1] [2/1 [2] [a/b] [2/1]x [99999999999/1] check recovery resync x\n"
              "[2/1]\n"
              "      finish=x\n"),
        Strings{"md1 runs [raid1] 0/0"});
    EXPECT_EQ(describe(view::parseDiskArrays("md1 : active raid1 sda1[0]\n      1 blocks [2/1]")),
              Strings{"md1 runs [raid1] 1/2 degraded"});
}

TEST(DiskArrays, areReadFromAFile)
{
    root::writeFile("/tmp/mdstat", kStart + "md0 : active raid1 sda1[0]\n      9 blocks [2/1]\n");
    EXPECT_EQ(describe(view::readDiskArrays("/tmp/mdstat")),
              Strings{"md0 runs [raid1] 1/2 degraded"});
    EXPECT_EQ(describe(view::readDiskArrays("/tmp/none")), Strings{});
}

} // namespace
