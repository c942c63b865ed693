// SPDX-License-Identifier: MIT
//
// status_report.h: the published share status, and what is to be said of it, as people and programs
// read it. Values in, text out; nothing here touches a file.
#pragma once

#include <string>
#include <vector>

#include "client/json_text.h"
#include "config/configuration.h"
#include "view/judgement.h"

namespace client {

/// One line a share under a heading. A state has the configuration's word for it beside its digit.
[[nodiscard]] std::string renderShares(const std::vector<view::ShareRow>& shares,
                                       const config::Configuration& configuration);

/// The same for programs. A share uses "used_kib" KiB or more, but less than "unit_kib" more.
[[nodiscard]] Json makeJson(const std::vector<view::ShareRow>& shares);

/// A finding's sentence on a terminal.
[[nodiscard]] std::string renderSentence(const view::Finding& finding);

/// How full the disk is, a line each share under a heading, when it was published (in local time)
/// and whether a collection is running, and then what there is to say of it all, a line each. Of a
/// status that could be read.
[[nodiscard]] std::string renderTable(const view::Situation& situation,
                                      const config::Configuration& configuration);

/// The same for programs: one JSON object in ASCII. Absent values are null, and so is the list of
/// shares if the collection got none. A name that is no UTF-8 has its bytes in "name_hex", too; a
/// share that has to be renamed before it is measured has "must_be_renamed".
[[nodiscard]] std::string renderJson(const view::Situation& situation,
                                     const config::Configuration& configuration);

} // namespace client
