// SPDX-License-Identifier: MIT
//
// share_rows.h: shares with backups for tests of pages, and the settings that judge them.
#pragma once

#include <chrono>
#include <ctime>
#include <optional>
#include <string>

#include "config/configuration.h"
#include "view/share_row.h"
#include "view/wording.h"

namespace sharerows {

inline constexpr std::time_t kNow = 1795253583; // 2026-11-21 09:33:03 UTC
inline const std::chrono::sys_days kToday = view::dayOf(kNow);

/// State 1 is good, 2 is failed and has a word.
inline config::Configuration configuration()
{
    config::Configuration all;
    all.goodStates = "1";
    all.failedStates = "2";
    all.words[2] = "disk <full>";
    return all;
}

inline view::ShareRow share(const std::string& name, std::optional<view::Space> used,
                            view::BackupReport report = view::BackupReport::kNone)
{
    return {.name = name, .used = used, .backupState = {}, .backupDay = {}, .report = report};
}

/// A share whose backup is so many days old.
inline view::ShareRow backedUp(const std::string& name, int age, std::optional<int> state)
{
    view::ShareRow row = share(name, view::Space{1, 'K'}, view::BackupReport::kRead);
    row.backupDay = kToday - std::chrono::days(age);
    row.backupState = state;
    return row;
}

} // namespace sharerows
