// SPDX-License-Identifier: MIT
#include "history/thinning.h"

namespace history {
namespace {

constexpr std::int64_t kDay = 86400;
constexpr std::int64_t kWeek = 7 * kDay;
constexpr std::int64_t kTwoYears = 730 * kDay;
/// The first of January 1970 was a Thursday.
constexpr std::int64_t kSinceMonday = 3 * kDay;

/// Whether the part of time that holds a moment has an entry that stays as long or longer.
bool hasKept(const Database& database, std::int64_t start, std::int64_t length, Kept kept)
{
    return Statement(database, "SELECT 1 FROM publication WHERE published >= ? AND published < ?"
                               " AND kept >= ? LIMIT 1")
        .bind(start)
        .bind(start + length)
        .bind(static_cast<std::int64_t>(kept))
        .next();
}

} // namespace

Kept keptAs(const Database& database, const Entry& entry)
{
    const std::int64_t published = entry.published;
    if (!entry.hasList) {
        return Kept::kThirtyDays;
    }
    if (!hasKept(database, published - (published + kSinceMonday) % kWeek, kWeek, Kept::kForEver)) {
        return Kept::kForEver;
    }
    const bool isFirst = !hasKept(database, published - published % kDay, kDay, Kept::kTwoYears);
    return isFirst ? Kept::kTwoYears : Kept::kThirtyDays;
}

void thin(const Database& database, std::time_t now)
{
    constexpr const char* kOver = "SELECT published FROM publication"
                                  " WHERE (kept = 0 AND published < ?1)"
                                  " OR (kept = 1 AND published < ?2)";
    // The list of shares makes this look up each row; without, it would read all of them.
    const std::string sizes = "DELETE FROM size WHERE share IN (SELECT id FROM share)"
                              " AND published IN (" +
                              std::string(kOver) + ")";
    const std::string entries =
        "DELETE FROM publication WHERE published IN (" + std::string(kOver) + ")";
    for (const std::string& each : {sizes, entries}) {
        Statement(database, each.c_str())
            .bind(std::int64_t{now} - 30 * kDay)
            .bind(std::int64_t{now} - kTwoYears)
            .run();
    }
    database.run("DELETE FROM share WHERE NOT EXISTS (SELECT 1 FROM size WHERE share = id);"
                 "DELETE FROM former WHERE share NOT IN (SELECT id FROM share);");
}

} // namespace history
