// SPDX-License-Identifier: MIT
//
// check_report.h: the judgement as the output of a monitoring plug-in. Computes only on values.
#pragma once

#include <string>

#include "config/configuration.h"
#include "view/judgement.h"

namespace client {

/// The exit codes of "vokctl check", from good to bad.
inline constexpr int kCheckOk = 0;
inline constexpr int kCheckUnknown = 3; ///< nothing is known to be wrong, but not all is known
inline constexpr int kCheckWarning = 1;
inline constexpr int kCheckCritical = 2;

struct CheckReport {
    int code;
    std::string line; ///< with its newline
};

/// "VOKCONTROL WARNING - SENTENCES | FIGURES": the sentences of all findings, the worst first; if
/// there are none, how full the disk is. Unknown figures are left out. Newlines and bars in names
/// are escaped.
[[nodiscard]] CheckReport renderCheck(const view::Situation& situation,
                                      const config::Configuration& configuration);

/// The line of a check that could not be made.
[[nodiscard]] CheckReport renderUnknown(const std::string& reason);

} // namespace client
