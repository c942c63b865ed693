// SPDX-License-Identifier: MIT
//
// reader.h: looks into the history. Reading needs no right to write.
#pragma once

#include <chrono>
#include <ctime>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "history/database.h"
#include "history/store.h"
#include "view/capacity.h"
#include "view/wording.h"

namespace history {

/// One share in one status. What was not measured or reported is absent.
struct Point {
    std::time_t published = 0;
    std::optional<view::Space> used;
    std::optional<int> backupState;
    std::optional<std::chrono::sys_days> backupDay;
};

/// Some entries of each share, by its name, the oldest first.
using Courses = std::map<std::string, std::vector<Point>, std::less<>>;

/// The file system at the time of one status.
struct DiskPoint {
    std::time_t published = 0;
    view::Capacity capacity;
};

struct FormerName {
    std::string name;
    std::time_t renamed = 0; ///< when a status first had the next name
};

/// A share that the history knows.
struct KnownShare {
    std::string name;
    std::time_t first = 0;
    std::time_t last = 0;
    std::vector<FormerName> formerNames; ///< the oldest first
};

/// The whole of the history, in short.
struct Extent {
    std::optional<std::time_t> first;     ///< of the entries that are left
    std::optional<std::time_t> last;      ///< of all entries
    std::optional<std::time_t> lastList;  ///< of those with a list of shares
    std::optional<std::time_t> begunAnew; ///< when a damaged file was put aside
};

inline constexpr std::time_t kAnyTime = std::numeric_limits<std::time_t>::max();

class Reader {
  public:
    /// @param patience  how long each look waits while another process is writing; then it throws
    ///                  DatabaseError (kOther)
    /// Throws DatabaseError: kNoDatabase if there is no history yet, kNotAllowed, kDamaged.
    explicit Reader(const std::string& path = kFile,
                    std::chrono::milliseconds patience = kPatience);

    /// @param latest  entries after this time do not count. Whoever asks what has vanished gives
    ///                the present time: a clock that was wrong may have left an entry of the
    ///                future, and all later shares would seem to have vanished before it
    [[nodiscard]] Extent extent(std::time_t latest = kAnyTime) const;

    /// All shares, in the order of their bytes.
    [[nodiscard]] std::vector<KnownShare> shares() const;

    /// A share by its name; nothing if the history does not know it.
    [[nodiscard]] std::optional<KnownShare> share(std::string_view name) const;

    /// A share's entries since a time, the oldest first; none for an unknown name. Those that it
    /// has under former names are among them.
    [[nodiscard]] std::vector<Point> points(std::string_view name, std::time_t since) const;

    /// What is enough to draw the courses of all shares since a time: the first entry of each day,
    /// the last one, and the last one that is so many days older. Few rows are read, however often
    /// a status is published.
    [[nodiscard]] Courses courses(std::time_t since, std::chrono::days days) const;

    /// The last entry of a share, at that time or before, in which it was measured.
    [[nodiscard]] std::optional<Point> lastMeasured(std::string_view name, std::time_t time) const;

    /// The file system's entries since a time, the oldest first.
    [[nodiscard]] std::vector<DiskPoint> diskPoints(std::time_t since) const;

  private:
    Database database_;
};

} // namespace history
