// SPDX-License-Identifier: MIT
//
// entries.h: entries for tests of the history, and what a history holds as text.
#pragma once

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "history/reader.h"
#include "history/store.h"
#include "tests/support/root.h"

namespace entries {

using Lines = std::vector<std::string>;

inline const std::string kFile = "/tmp/history/history.db";
inline constexpr std::time_t kHour = 3600;
inline constexpr std::time_t kDay = 86400;
inline constexpr std::time_t kMonday = 1767571200; // 2026-01-05 00:00:00 UTC

inline history::ShareEntry share(const std::string& name, std::uint16_t used, char unit = 'M')
{
    return {.name = name,
            .used = view::Space{used, unit},
            .backupState = {},
            .backupDay = {},
            .folder = {}};
}

inline history::ShareEntry share(const std::string& name, std::uint16_t used,
                                 const history::Folder& folder)
{
    history::ShareEntry entry = share(name, used);
    entry.folder = folder;
    return entry;
}

inline history::Entry entry(std::time_t published, std::vector<history::ShareEntry> shares)
{
    return {.published = published,
            .hasList = true,
            .capacity = view::Capacity{1000, 400, 600},
            .shares = std::move(shares)};
}

/// An entry with nothing but its time.
inline history::Entry bare(std::time_t published)
{
    return entry(published, {});
}

/// "604 M", "-"
inline std::string words(const std::optional<view::Space>& used)
{
    return used ? std::to_string(used->value) + " " + used->unit : "-";
}

/// A share's entries: "TIME SIZE STATE DAY", times from kMonday on.
inline Lines points(const std::string& name, const std::string& file = kFile)
{
    Lines lines;
    for (const history::Point& point : history::Reader(file).points(name, 0)) {
        lines.push_back(std::to_string(point.published - kMonday) + " " + words(point.used) + " " +
                        (point.backupState ? std::to_string(*point.backupState) : "-") + " " +
                        (point.backupDay ? view::formatIsoDate(*point.backupDay) : "-"));
    }
    return lines;
}

/// All shares: "NAME FIRST LAST", and after it the former names, times from kMonday on.
inline Lines shares(const std::string& file = kFile)
{
    Lines lines;
    for (const history::KnownShare& each : history::Reader(file).shares()) {
        std::string line = each.name + " " + std::to_string(each.first - kMonday) + " " +
                           std::to_string(each.last - kMonday);
        for (const history::FormerName& former : each.formerNames) {
            line += ", until " + std::to_string(former.renamed - kMonday) + " " + former.name;
        }
        lines.push_back(line);
    }
    return lines;
}

/// The times of all entries, from kMonday on.
inline std::vector<std::time_t> times(const std::string& file = kFile)
{
    std::vector<std::time_t> all;
    for (const history::DiskPoint& point : history::Reader(file).diskPoints(0)) {
        all.push_back(point.published - kMonday);
    }
    return all;
}

/// What a call fails with; nothing if it does not fail.
template <class Call> std::optional<history::DatabaseError> failureOf(const Call& call)
{
    try {
        call();
    } catch (const history::DatabaseError& error) {
        return error;
    }
    return std::nullopt;
}

} // namespace entries
