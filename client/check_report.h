// SPDX-License-Identifier: MIT
//
// check_report.h: the judgement as a monitoring plug-in says it. Values in, values out.
#pragma once

#include <string>

#include "config/configuration.h"
#include "view/judgement.h"

namespace client {

/// How "vokctl check" ends. What is worse stands further down, but for its number.
inline constexpr int kCheckOk = 0;
inline constexpr int kCheckUnknown = 3; ///< nothing is known to be wrong, but not all is known
inline constexpr int kCheckWarning = 1;
inline constexpr int kCheckCritical = 2;

struct CheckReport {
    int code;
    std::string line; ///< with its newline
};

/// "VOKCONTROL WARNING - SENTENCES | FIGURES": the sentences of all that was found, the worst
/// first, or how full the disk is. Figures that are not known are left out. No name can break the
/// line or bring in a bar.
[[nodiscard]] CheckReport renderCheck(const view::Situation& situation,
                                      const config::Configuration& configuration);

/// The line of a check that could not be made.
[[nodiscard]] CheckReport renderUnknown(const std::string& reason);

} // namespace client
