// SPDX-License-Identifier: MIT
//
// status_report.h: the published share status and its findings, as text for people and as JSON for
// programs. Computes only on values.
#pragma once

#include <string>
#include <vector>

#include "client/json_text.h"
#include "config/configuration.h"
#include "view/judgement.h"

namespace client {

/// A heading and one line per share. A state is its digit and its word from the configuration.
[[nodiscard]] std::string renderShares(const std::vector<view::ShareRow>& shares,
                                       const config::Configuration& configuration);

/// The same for programs. A share uses at least "used_kib" KiB, and less than "unit_kib" more.
[[nodiscard]] Json makeJson(const std::vector<view::ShareRow>& shares);

/// A finding's sentence on a terminal.
[[nodiscard]] std::string renderSentence(const view::Finding& finding);

/// How full the disk is, the shares, when the status was published (in local time), whether a
/// collection runs, and the findings, one line each. The status must have been readable.
[[nodiscard]] std::string renderTable(const view::Situation& situation,
                                      const config::Configuration& configuration);

/// The same for programs: one JSON object in ASCII. Unknown values are null, and so is the list of
/// shares if the collection got none. "name_hex" has the bytes of a name that is not UTF-8;
/// "must_be_renamed" marks a share that cannot be measured under its name.
[[nodiscard]] std::string renderJson(const view::Situation& situation,
                                     const config::Configuration& configuration);

} // namespace client
