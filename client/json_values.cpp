// SPDX-License-Identifier: MIT
#include "client/json_values.h"

#include "core/bytes.h"
#include "sharestatus/status_format.h"
#include "view/utf8.h"

namespace client {

void addName(Json& json, const std::string& name)
{
    json["name"] = name;
    if (!view::isUtf8(name)) {
        std::string digits;
        core::appendHex(digits, name);
        json["name_hex"] = digits;
    }
}

std::string formatUtc(std::time_t time)
{
    std::tm utc = {};
    ::gmtime_r(&time, &utc);
    return view::formatTime("%Y-%m-%dT%H:%M:%SZ", utc);
}

Json makeTime(const std::optional<std::time_t>& time)
{
    return time ? Json(formatUtc(*time)) : Json();
}

void addSpace(Json& json, const std::optional<view::Space>& space)
{
    json["used_kib"] = space ? Json(space->kibibytes()) : Json();
    json["unit_kib"] = space ? Json(sharestatus::findUnit(space->unit)->kibibytes) : Json();
}

void addBackup(Json& json, std::optional<int> state, std::optional<std::chrono::sys_days> day)
{
    json["backup_state"] = state ? Json(*state) : Json();
    json["backup_date"] = day ? Json(view::formatIsoDate(*day)) : Json();
}

Json makeFindings(const std::vector<view::Finding>& findings)
{
    Json json = Json::array();
    for (const view::Finding& finding : findings) {
        json.push_back({{"level", view::wordOf(finding.level)},
                        {"kind", finding.kind},
                        {"shares", finding.shares},
                        {"sentence", finding.sentence}});
    }
    return json;
}

} // namespace client
