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

/// Where the service keeps how long requests have taken since it began: a line for each command,
/// "CODE COUNT MILLISECONDS".
inline constexpr const char* kTimesFile = "/run/vokcontrol/requests";

/// All figures, with "# EOF" at the end. What is not known has no line, so that it is a gap and not
/// a zero. A byte of a name that is no UTF-8 is shown as \xHH; of two names that look the same
/// then, the first counts, since a label that stands twice would make the whole text worthless.
/// @param usage  the bytes of kUsageFile; of another number of bytes than a table has, nothing
/// counts
/// @param times  the bytes of kTimesFile; a line of another form is left out
[[nodiscard]] std::string renderMetrics(const view::Situation& situation,
                                        const config::Configuration& configuration,
                                        std::string_view usage = {}, std::string_view times = {});

} // namespace client
