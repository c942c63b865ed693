// SPDX-License-Identifier: MIT
//
// metrics_report.h: the judged status as the OpenMetrics text that monitoring programs read. Values
// in, text out.
#pragma once

#include <string>
#include <string_view>

#include "config/configuration.h"
#include "view/judgement.h"

namespace client {

/// Where the service keeps how often each command was received.
inline constexpr const char* kUsageFile = "/etc/pelconfig/vokcontrol/vokcontrol_cmd_used";

/// All figures, with "# EOF" at the end. What is not known has no line, so that it is a gap and not
/// a zero. A byte of a name that is no UTF-8 is shown as \xHH; of two names that look the same
/// then, the first counts, since a label that stands twice would make the whole text worthless.
/// @param usage  the bytes of kUsageFile; of another number of bytes than a table has, nothing
/// counts
[[nodiscard]] std::string renderMetrics(const view::Situation& situation,
                                        const config::Configuration& configuration,
                                        std::string_view usage = {});

} // namespace client
