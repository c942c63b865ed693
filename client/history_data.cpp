// SPDX-License-Identifier: MIT
#include <array>

#include "client/history_report.h"
#include "client/json_values.h"
#include "history/trend.h"

namespace client {
namespace {

using history::Extent;
using history::KnownShare;
using history::Reader;

std::time_t startOf(const HistoryView& asked)
{
    constexpr std::time_t kDay = 86400;
    return asked.now - static_cast<std::time_t>(asked.days.count()) * kDay;
}

// ---- JSON ---------------------------------------------------------------------------------------

const char* wordOf(history::Fate fate)
{
    constexpr auto kWords = std::to_array<const char*>({"kept", "new", "renamed", "vanished"});
    return kWords.at(static_cast<std::size_t>(fate));
}

void addKnown(Json& json, const Reader& reader, const KnownShare& share, const HistoryView& asked)
{
    const history::Fate fate = history::fateOf(share, reader.extent(asked.now), startOf(asked));
    const auto change = history::changeOver(reader, share.name, asked.days, asked.now);
    addName(json, share.name);
    json["fate"] = wordOf(fate);
    json["first"] = makeTime(share.first);
    json["last"] = makeTime(share.last);
    json["former_names"] = Json::array();
    for (const history::FormerName& former : share.formerNames) {
        Json each;
        addName(each, former.name);
        each["renamed"] = makeTime(former.renamed);
        json["former_names"].push_back(each);
    }
    json["change_kib"] = change ? Json(change->kibibytes) : Json();
    json["change_uncertainty_kib"] = change ? Json(change->uncertainty) : Json();
}

Json makePoint(const history::Point& point)
{
    Json json;
    json["published"] = makeTime(point.published);
    addSpace(json, point.used);
    addBackup(json, point.backupState, point.backupDay);
    return json;
}

Json makeDiskPoint(const history::DiskPoint& point)
{
    return {{"published", formatUtc(point.published)},
            {"capacity_kib", point.capacity.total},
            {"used_kib", point.capacity.used},
            {"free_kib", point.capacity.free}};
}

Json makeExtent(const Extent& extent, const HistoryView& asked)
{
    Json json;
    json["since"] = makeTime(startOf(asked));
    json["history"] = {{"first", makeTime(extent.first)},
                       {"last", makeTime(extent.last)},
                       {"begun_anew", makeTime(extent.begunAnew)}};
    return json;
}

// ---- Comma-separated values
// -----------------------------------------------------------------------

std::string quote(std::string_view text)
{
    std::string quoted = "\"";
    for (const char c : text) {
        quoted += (c == '"') ? "\"\"" : std::string(1, c);
    }
    return quoted + "\"";
}

std::string renderPoint(const KnownShare& share, const history::Point& point)
{
    Json json;
    addSpace(json, point.used);
    const auto number = [&](const char* key) {
        return json[key].is_null() ? std::string() : json[key].dump();
    };
    return quote(share.name) + "," + formatUtc(point.published) + "," + number("used_kib") + "," +
           number("unit_kib") + "," +
           (point.backupState ? std::to_string(*point.backupState) : "") + "," +
           (point.backupDay ? view::formatIsoDate(*point.backupDay) : "") + "\n";
}

} // namespace

std::string renderHistoryJson(const Reader& reader, const HistoryView& asked)
{
    Json json = makeExtent(reader.extent(), asked);
    const std::vector<history::DiskPoint> disk = reader.diskPoints(0);
    const std::optional<double> days = history::daysUntilFull(disk);
    json["days_until_full"] = days ? Json(static_cast<std::int64_t>(*days)) : Json();
    json["disk"] = Json::array();
    for (const history::DiskPoint& point : reader.diskPoints(startOf(asked))) {
        json["disk"].push_back(makeDiskPoint(point));
    }
    json["shares"] = Json::array();
    for (const KnownShare& share : reader.shares()) {
        Json each;
        addKnown(each, reader, share, asked);
        json["shares"].push_back(each);
    }
    return renderJson(json);
}

std::string renderHistoryJson(const Reader& reader, const KnownShare& share,
                              const HistoryView& asked)
{
    Json json = makeExtent(reader.extent(), asked);
    addKnown(json, reader, share, asked);
    json["points"] = Json::array();
    for (const history::Point& point : reader.points(share.name, startOf(asked))) {
        json["points"].push_back(makePoint(point));
    }
    return renderJson(json);
}

std::string renderHistoryCsv(const Reader& reader, const HistoryView& asked)
{
    std::string text = "published,capacity_kib,used_kib,free_kib\n";
    for (const history::DiskPoint& point : reader.diskPoints(startOf(asked))) {
        text += formatUtc(point.published) + "," + std::to_string(point.capacity.total) + "," +
                std::to_string(point.capacity.used) + "," + std::to_string(point.capacity.free) +
                "\n";
    }
    return text;
}

std::string renderHistoryCsv(const Reader& reader, const KnownShare& share,
                             const HistoryView& asked)
{
    std::string text = "share,published,used_kib,unit_kib,backup_state,backup_date\n";
    for (const history::Point& point : reader.points(share.name, startOf(asked))) {
        text += renderPoint(share, point);
    }
    return text;
}

} // namespace client
