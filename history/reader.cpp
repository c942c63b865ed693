// SPDX-License-Identifier: MIT
#include "history/reader.h"

#include "history/schema.h"
#include "sharestatus/status_format.h"
#include "text/translation.h"

namespace history {
namespace {

using Number = std::optional<std::int64_t>;

std::optional<std::time_t> timeAt(const Statement& query, int column)
{
    const Number number = query.number(column);
    return number ? std::optional(static_cast<std::time_t>(*number)) : std::nullopt;
}

std::optional<view::Space> spaceOf(Number used, Number unit)
{
    const auto& units = sharestatus::kUnits;
    if (!used || !unit || *unit < 0 || *unit >= static_cast<std::int64_t>(units.size())) {
        return std::nullopt;
    }
    return view::Space{static_cast<std::uint16_t>(*used),
                       units.at(static_cast<std::size_t>(*unit)).letter};
}

std::optional<std::chrono::sys_days> dayOf(Number day)
{
    return day ? std::optional(std::chrono::sys_days(std::chrono::days(*day))) : std::nullopt;
}

Point pointAt(const Statement& row)
{
    const Number state = row.number(3);
    return {.published = timeAt(row, 0).value_or(0),
            .used = spaceOf(row.number(1), row.number(2)),
            .backupState = state ? std::optional(static_cast<int>(*state)) : std::nullopt,
            .backupDay = dayOf(row.number(4))};
}

std::vector<FormerName> formerNames(const Database& database, Number id)
{
    std::vector<FormerName> names;
    Statement query(database, "SELECT name, renamed FROM former WHERE share = ? ORDER BY renamed");
    query.bind(id);
    while (query.next()) {
        names.push_back({query.bytes(0), timeAt(query, 1).value_or(0)});
    }
    return names;
}

/// Shares, of which a statement has number, name, first and last time.
std::vector<KnownShare> readShares(const Database& database, Statement& query)
{
    std::vector<KnownShare> shares;
    while (query.next()) {
        shares.push_back({.name = query.bytes(1),
                          .first = timeAt(query, 2).value_or(0),
                          .last = timeAt(query, 3).value_or(0),
                          .formerNames = formerNames(database, query.number(0))});
    }
    return shares;
}

} // namespace

Reader::Reader(const std::string& path, std::chrono::milliseconds patience)
    : database_(path, Database::Access::kRead, patience)
{
    if (!hasSchema(database_)) {
        throw DatabaseError(DatabaseError::Kind::kNoDatabase,
                            text::fill(text::tr("{} is empty"), {path}));
    }
}

Extent Reader::extent(std::time_t latest) const
{
    Statement query(
        database_, "SELECT (SELECT min(published) FROM publication WHERE published <= ?1),"
                   " (SELECT max(published) FROM publication WHERE published <= ?1),"
                   " (SELECT max(published) FROM publication WHERE published <= ?1 AND listed = 1),"
                   " (SELECT max(happened) FROM event WHERE kind = 'begun anew')");
    query.bind(std::int64_t{latest});
    if (!query.next()) {
        return {};
    }
    return {timeAt(query, 0), timeAt(query, 1), timeAt(query, 2), timeAt(query, 3)};
}

std::vector<KnownShare> Reader::shares() const
{
    Statement query(database_, "SELECT id, name, first,"
                               " (SELECT max(published) FROM size WHERE share = id)"
                               " FROM share ORDER BY name");
    return readShares(database_, query);
}

std::optional<KnownShare> Reader::share(std::string_view name) const
{
    Statement query(database_, "SELECT id, name, first,"
                               " (SELECT max(published) FROM size WHERE share = id)"
                               " FROM share WHERE name = ?");
    query.bind(name);
    const std::vector<KnownShare> found = readShares(database_, query);
    return found.empty() ? std::nullopt : std::optional(found.front());
}

std::vector<Point> Reader::points(std::string_view name, std::time_t since) const
{
    std::vector<Point> points;
    Statement query(database_, "SELECT published, used, unit, state, day FROM size"
                               " WHERE share = (SELECT id FROM share WHERE name = ?)"
                               " AND published >= ? ORDER BY published");
    query.bind(name).bind(std::int64_t{since});
    while (query.next()) {
        points.push_back(pointAt(query));
    }
    return points;
}

Courses Reader::courses(std::time_t since, std::chrono::days days) const
{
    const std::time_t last = extent().lastList.value_or(0);
    const std::time_t older = last - static_cast<std::time_t>(days.count()) * 86400;
    // The joins are in the order in which they are to be done: few entries first.
    Statement query(database_,
                    "SELECT size.published, size.used, size.unit, size.state, size.day, share.name"
                    " FROM publication CROSS JOIN share CROSS JOIN size"
                    " ON size.share = share.id AND size.published = publication.published"
                    " WHERE publication.published >= ? AND (publication.kept > 0"
                    " OR publication.published = ? OR publication.published ="
                    " (SELECT max(published) FROM publication WHERE listed = 1 AND published <= ?))"
                    " ORDER BY publication.published");
    query.bind(std::int64_t{since}).bind(std::int64_t{last}).bind(std::int64_t{older});
    Courses courses;
    while (query.next()) {
        courses[query.bytes(5)].push_back(pointAt(query));
    }
    return courses;
}

std::optional<Point> Reader::lastMeasured(std::string_view name, std::time_t time) const
{
    Statement query(database_, "SELECT published, used, unit, state, day FROM size"
                               " WHERE share = (SELECT id FROM share WHERE name = ?)"
                               " AND published <= ? AND used IS NOT NULL"
                               " ORDER BY published DESC LIMIT 1");
    query.bind(name).bind(std::int64_t{time});
    return query.next() ? std::optional(pointAt(query)) : std::nullopt;
}

std::vector<DiskPoint> Reader::diskPoints(std::time_t since) const
{
    std::vector<DiskPoint> points;
    Statement query(database_, "SELECT published, total, used, free FROM publication"
                               " WHERE total IS NOT NULL AND published >= ? ORDER BY published");
    query.bind(std::int64_t{since});
    while (query.next()) {
        const auto part = [&](int column) {
            return static_cast<std::uint64_t>(query.number(column).value_or(0));
        };
        points.push_back({timeAt(query, 0).value_or(0), {part(1), part(2), part(3)}});
    }
    return points;
}

} // namespace history
