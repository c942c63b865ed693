// SPDX-License-Identifier: MIT
#include "history/writing.h"

#include <algorithm>
#include <string_view>

#include "sharestatus/status_format.h"

namespace history {
namespace {

using Number = std::optional<std::int64_t>;

void insertPublication(const Database& database, const Entry& entry, Kept kept)
{
    const auto of = [&](std::uint64_t view::Capacity::*part) {
        return entry.capacity ? Number(static_cast<std::int64_t>((*entry.capacity).*part))
                              : std::nullopt;
    };
    Statement(database, "INSERT INTO publication (published, kept, listed, total, used, free)"
                        " VALUES (?, ?, ?, ?, ?, ?)")
        .bind(std::int64_t{entry.published})
        .bind(static_cast<std::int64_t>(kept))
        .bind(std::int64_t{entry.hasList ? 1 : 0})
        .bind(of(&view::Capacity::total))
        .bind(of(&view::Capacity::used))
        .bind(of(&view::Capacity::free))
        .run();
}

Number findByName(const Database& database, std::string_view name)
{
    Statement query(database, "SELECT id FROM share WHERE name = ?");
    return query.bind(name).next() ? query.number(0) : std::nullopt;
}

bool isListed(const Entry& entry, std::string_view name)
{
    return std::ranges::find(entry.shares, name, &ShareEntry::name) != entry.shares.end();
}

/// Gives a share its new name, if it is one that had another. @return its number
Number findRenamed(const Database& database, const Entry& entry, const ShareEntry& share)
{
    if (!share.folder) {
        return std::nullopt;
    }
    Statement query(database, "SELECT id, name FROM share WHERE number = ? AND made = ?");
    query.bind(share.folder->number).bind(share.folder->made);
    while (query.next()) {
        const std::string former = query.bytes(1);
        if (isListed(entry, former)) {
            continue;
        }
        const Number id = query.number(0);
        Statement(database, "INSERT INTO former (share, renamed, name) VALUES (?, ?, ?)")
            .bind(id)
            .bind(std::int64_t{entry.published})
            .bind(former)
            .run();
        Statement(database, "UPDATE share SET name = ? WHERE id = ?")
            .bind(share.name)
            .bind(id)
            .run();
        return id;
    }
    return std::nullopt;
}

Number addShare(const Database& database, const Entry& entry, const ShareEntry& share)
{
    Statement(database, "INSERT INTO share (name, first) VALUES (?, ?)")
        .bind(share.name)
        .bind(std::int64_t{entry.published})
        .run();
    return database.lastRow();
}

void keepFolder(const Database& database, Number id, const std::optional<Folder>& folder)
{
    if (folder) {
        Statement(database, "UPDATE share SET number = ?1, made = ?2 WHERE id = ?3"
                            " AND (number IS NOT ?1 OR made IS NOT ?2)")
            .bind(folder->number)
            .bind(folder->made)
            .bind(id)
            .run();
    }
}

/// The unit as its place in the table of units, from 0 on.
Number unitOf(const ShareEntry& share)
{
    const auto& units = sharestatus::kUnits;
    return share.used ? Number(sharestatus::findUnit(share.used->unit) - units.data())
                      : std::nullopt;
}

Number dayOf(const ShareEntry& share)
{
    return share.backupDay ? Number(share.backupDay->time_since_epoch().count()) : std::nullopt;
}

void insertSize(Statement& insertion, Number id, const Entry& entry, const ShareEntry& share)
{
    insertion.bind(id)
        .bind(std::int64_t{entry.published})
        .bind(share.used ? Number(share.used->value) : std::nullopt)
        .bind(unitOf(share))
        .bind(share.backupState ? Number(*share.backupState) : std::nullopt)
        .bind(dayOf(share))
        .run();
}

} // namespace

void insertEntry(const Database& database, const Entry& entry, Kept kept)
{
    insertPublication(database, entry, kept);
    Statement insertion(database,
                        "INSERT OR IGNORE INTO size (share, published, used, unit, state, day)"
                        " VALUES (?, ?, ?, ?, ?, ?)");
    for (const ShareEntry& share : entry.shares) {
        Number id = findByName(database, share.name);
        if (!id) {
            id = findRenamed(database, entry, share);
        }
        if (!id) {
            id = addShare(database, entry, share);
        }
        keepFolder(database, id, share.folder);
        insertSize(insertion, id, entry, share);
    }
}

} // namespace history
