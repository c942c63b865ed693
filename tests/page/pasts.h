// SPDX-License-Identifier: MIT
//
// pasts.h: a history for tests of pages, in its place.
#pragma once

#include <cstdint>
#include <ctime>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include "history/store.h"
#include "tests/support/root.h"

namespace pasts {

inline constexpr std::time_t kDay = 86400;
inline constexpr std::time_t kNow = 1795348800; // 2026-11-22 12:00:00 UTC

inline history::ShareEntry share(const std::string& name, std::uint16_t used)
{
    return {.name = name,
            .used = view::Space{used, 'M'},
            .backupState = {},
            .backupDay = {},
            .folder = {}};
}

/// A disk of 1 GB.
inline view::Capacity diskWith(std::uint64_t free)
{
    return {1'000'000, 1'000'000 - free, free};
}

/// Remembers a status of so many days before a time.
inline void remember(int age, std::vector<history::ShareEntry> shares,
                     view::Capacity disk = diskWith(600'000), std::time_t now = kNow)
{
    const std::time_t published = now - age * kDay;
    const history::Entry entry = {
        .published = published, .hasList = true, .capacity = disk, .shares = std::move(shares)};
    EXPECT_EQ(history::Store().remember(entry, published), history::Remembered::kNew);
}

/// For tests that begin without a history.
class Test : public root::UntracedTest {
  protected:
    void SetUp() override
    {
        root::UntracedTest::SetUp();
        std::filesystem::remove_all("/var/lib/vokcontrol");
    }

    void TearDown() override
    {
        std::filesystem::remove_all("/var/lib/vokcontrol");
        root::UntracedTest::TearDown();
    }
};

} // namespace pasts
