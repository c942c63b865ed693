// SPDX-License-Identifier: MIT
//
// notification.h: when people are told of the judgement, and what was last told.
#pragma once

#include <ctime>
#include <optional>
#include <string>

#include "view/judgement.h"

namespace client {

inline constexpr const char* kToldFile = "/var/lib/vokcontrol/notified";

/// The last level that was told, and when.
struct Told {
    view::Level level = view::Level::kFine;
    std::time_t time = 0;

    bool operator==(const Told&) const = default;
};

/// Whether there is something to tell: another level than was last told, or the same one, if it is
/// not fine and was told a day ago or more. A time in the future says nothing, so that counts as a
/// day ago, too.
[[nodiscard]] bool isDue(const Told& last, view::Level level, std::time_t now);

/// Reads the file. One that is missing or makes no sense counts as nothing told, at a level of
/// fine.
[[nodiscard]] Told readTold(const std::string& path = kToldFile);

/// Replaces the file as a whole, and makes its folder for its owner alone.
/// @return an errno value; 0 if it was written
[[nodiscard]] int writeTold(const Told& told, const std::string& path = kToldFile);

/// Held while people are told, so that two callers do not tell the same. Waits for who holds it.
/// Where the file cannot be made there is nothing to hold.
class TellingLock {
  public:
    explicit TellingLock(const std::string& path = std::string(kToldFile) + "-lock");
    ~TellingLock();
    TellingLock(const TellingLock&) = delete;
    TellingLock& operator=(const TellingLock&) = delete;

  private:
    int file_;
};

/// "warning" as a level; nothing for another word.
[[nodiscard]] std::optional<view::Level> levelOf(const std::string& word);

} // namespace client
