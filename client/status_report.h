// SPDX-License-Identifier: MIT
//
// status_report.h: the published share status as people and programs read it. Values in, text out;
// nothing here touches a file.
#pragma once

#include <string>
#include <vector>

#include "client/json_text.h"
#include "view/published_status.h"

namespace client {

/// One line a share under a heading.
[[nodiscard]] std::string renderShares(const std::vector<view::ShareRow>& shares);

/// The same for programs.
[[nodiscard]] Json makeJson(const std::vector<view::ShareRow>& shares);

/// One line a share under a heading, then the shares that have to be renamed, when it was published
/// (in local time) and whether a collection is running. Of a status that could be read.
[[nodiscard]] std::string renderTable(const view::PublishedStatus& status);

/// The same for programs: one JSON object in ASCII. Absent values are null, and so is the list of
/// shares if the collection got none. A name that is no UTF-8 has its bytes in "name_hex", too; a
/// share that has to be renamed before it is measured has "must_be_renamed".
[[nodiscard]] std::string renderJson(const view::PublishedStatus& status);

} // namespace client
