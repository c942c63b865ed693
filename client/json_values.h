// SPDX-License-Identifier: MIT
//
// json_values.h: names, times and sizes in the JSON of every command.
#pragma once

#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "client/json_text.h"
#include "view/judgement.h"
#include "view/wording.h"

namespace client {

/// Adds "name"; for one that is no UTF-8 also "name_hex", its bytes.
void addName(Json& json, const std::string& name);

/// "2026-11-21T09:33:03Z"
[[nodiscard]] std::string formatUtc(std::time_t time);

/// Null for nothing.
[[nodiscard]] Json makeTime(const std::optional<std::time_t>& time);

/// Adds "used_kib" and "unit_kib": the space is at least the former, and less than the latter more.
/// Both are null for nothing.
void addSpace(Json& json, const std::optional<view::Space>& space);

/// The state of a backup and its day, or nulls.
void addBackup(Json& json, std::optional<int> state, std::optional<std::chrono::sys_days> day);

[[nodiscard]] Json makeFindings(const std::vector<view::Finding>& findings);

} // namespace client
