// SPDX-License-Identifier: MIT
//
// overview_findings.h: what needs attention, at the top of the overview.
#pragma once

#include <vector>

#include "page/html.h"
#include "view/judgement.h"

namespace page {

/// A notice with the findings in their order, each with a word for its level; if there are none, a
/// line that says so.
[[nodiscard]] Html findingsNotice(const std::vector<view::Finding>& findings);

} // namespace page
