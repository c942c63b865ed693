// SPDX-License-Identifier: MIT
#include "client/json_values.h"

#include <gtest/gtest.h>

namespace {

using client::Json;

TEST(JsonValues, nameHasItsBytesIfItIsNoUtf8)
{
    Json json;
    client::addName(json, "M\xC3\xBCsik");
    EXPECT_EQ(json.dump(), "{\"name\":\"M\xC3\xBCsik\"}");
    client::addName(json, "M\xFC");
    EXPECT_EQ(client::renderJson(json),
              "{\n  \"name\": \"M\\ufffd\",\n  \"name_hex\": \"4dfc\"\n}\n");
}

TEST(JsonValues, timesAreInUtc)
{
    EXPECT_EQ(client::formatUtc(2079250383), "2035-11-21T09:33:03Z");
    EXPECT_EQ(client::makeTime(2079250383).dump(), "\"2035-11-21T09:33:03Z\"");
    EXPECT_EQ(client::makeTime(std::nullopt).dump(), "null");
}

TEST(JsonValues, spaceHasItsUnit)
{
    Json json;
    client::addSpace(json, view::Space{604, 'M'});
    EXPECT_EQ(json.dump(), R"({"used_kib":604000,"unit_kib":1000})");
    client::addSpace(json, std::nullopt);
    EXPECT_EQ(json.dump(), R"({"used_kib":null,"unit_kib":null})");
}

TEST(JsonValues, backupHasStateAndDay)
{
    Json json;
    client::addBackup(json, 3, std::chrono::sys_days(std::chrono::days(20000)));
    EXPECT_EQ(json.dump(), R"({"backup_state":3,"backup_date":"2024-10-04"})");
    client::addBackup(json, std::nullopt, std::nullopt);
    EXPECT_EQ(json.dump(), R"({"backup_state":null,"backup_date":null})");
}

TEST(JsonValues, findingsHaveAllThatIsKnown)
{
    const std::vector<view::Finding> findings = {
        {.level = view::Level::kCritical, .kind = "full", .sentence = "It is full."},
        {view::Level::kWarning, "no-backup", {"a", "b"}, "None."}};
    EXPECT_EQ(client::makeFindings(findings).dump(),
              R"([{"level":"critical","kind":"full","shares":[],"sentence":"It is full."},)"
              R"({"level":"warning","kind":"no-backup","shares":["a","b"],"sentence":"None."}])");
    EXPECT_EQ(client::makeFindings({}).dump(), "[]");
}

} // namespace
