// SPDX-License-Identifier: MIT
#include "view/progress.h"

#include <gtest/gtest.h>

namespace {

using view::Collector;
using view::PublishedStatus;

constexpr std::time_t kStart = 1795253583;

/// The progress with these shares in the last status, in one line.
std::string describe(const std::string& share, const std::vector<std::string>& names)
{
    PublishedStatus status;
    status.collectingSince = kStart;
    for (const std::string& name : names) {
        status.shares.push_back({.name = name, .used = {}, .backupState = {}, .backupDay = {}});
    }
    const view::Progress progress =
        view::findProgress({.state = Collector::State::kRuns, .share = share}, status);
    EXPECT_EQ(progress.since, kStart);
    return progress.share + " " + std::to_string(progress.place) + " " +
           std::to_string(progress.count);
}

TEST(Progress, isTheShareAndItsPlaceInTheLastStatus)
{
    EXPECT_EQ(describe("Media", {"Media", "Photos"}), "Media 1 2");
    EXPECT_EQ(describe("Photos", {"Media", "Photos"}), "Photos 2 2");
}

TEST(Progress, hasNoPlaceIfTheShareIsNewOrUnknown)
{
    EXPECT_EQ(describe("New", {"Media", "Photos"}), "New 0 0");
    EXPECT_EQ(describe("", {"Media", ""}), " 0 0");
    EXPECT_EQ(describe("Media", {}), "Media 0 0");
}

TEST(Progress, hasNoStartIfThatIsNotKnown)
{
    EXPECT_EQ(view::findProgress({}, {}).since, std::nullopt);
}

} // namespace
