// SPDX-License-Identifier: MIT
//
// lines.h: the lines of a configuration file.
#pragma once

#include <string>
#include <string_view>

#include "config/configuration.h"

namespace config {

/// The settings that the content of a file makes. Throws BadConfiguration for the first line that
/// is not understood.
/// @param file  its name, for that complaint
[[nodiscard]] Configuration readLines(const std::string& file, std::string_view content);

} // namespace config
