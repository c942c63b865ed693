// SPDX-License-Identifier: MIT
//
// doctor_report.h: what the checks have said, for people and for programs. Values in, values out.
#pragma once

#include <string>
#include <vector>

#include "client/doctor.h"
#include "client/exit_codes.h"

namespace client {

/// A line for each check: sign, name, reason and remedy; then one that counts them. No name of the
/// appliance's can break a line.
[[nodiscard]] std::string renderDoctorText(const std::vector<Result>& results);

/// "wrong" and "unchecked" count checks; "checks" has each with its name, result, reason and, if it
/// is wrong, remedy.
[[nodiscard]] std::string renderDoctorJson(const std::vector<Result>& results);

/// kRefused if anything is wrong.
[[nodiscard]] ExitCode exitCodeOf(const std::vector<Result>& results);

} // namespace client
