// SPDX-License-Identifier: MIT
//
// store.h: writes the history. Each published status is remembered once, by the time at which it
// was published, in one transaction. Of the entries, all of the last 30 days stay, then the first
// of each day for two years, then the first of each week.
//
//   publication   a row each status: when, how long it is kept, the file system's size and free
//   space share         a row each share: its name, its folder, when it was first seen former the
//   names that a share had before, each with the time of the entry that renamed it size          a
//   row each share and status: space used with its unit, last backup. The rows of a
//                 share are beside each other, so that a look at its year reads few pages
//   event         what became of the file itself
#pragma once

#include <ctime>
#include <memory>
#include <optional>
#include <string>

#include "history/database.h"
#include "history/entry.h"

namespace history {

inline constexpr const char* kFile = "/var/lib/vokcontrol/history.db";
/// What a damaged file is called after it has been put aside: its own name and this.
inline constexpr const char* kAside = ".damaged";

enum class Remembered {
    kNew,
    kKnown,     ///< a status of that time is in the history already
    kBegunAnew, ///< it is the first entry of a new history: the file was damaged, and put aside
};

/// The one writer: as long as it exists, no other process has one for the same file.
class Store {
  public:
    /// Waits for other writers for at most 15 seconds. Makes the folder, for its owner alone, and
    /// the file, if missing. Touches the file, its journal (FILE-journal) and the lock file
    /// FILE-lock. Throws DatabaseError.
    explicit Store(std::string path = kFile);
    ~Store();
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    /// Remembers an entry, and once a day thins the older ones. If the file is damaged it is
    /// renamed to FILE.damaged, which replaces an earlier one, and a new one is begun. Throws
    /// DatabaseError; then the history is as it was before.
    /// @param now  the time of the thinning, unless it is more than a day after the entry before
    Remembered remember(const Entry& entry, std::time_t now);

  private:
    void open();
    void beginAnew(std::time_t now);
    [[nodiscard]] bool knows(std::time_t published) const;
    void checkOnce();
    [[nodiscard]] std::time_t timeOfThinning(const Entry& entry, std::time_t now) const;
    void write(const Entry& entry, std::time_t now) const;

    std::string path_;
    int lock_;
    std::optional<Database> database_;
    bool isChecked_ = false;
};

} // namespace history
