// SPDX-License-Identifier: MIT
//
// lines.h: the lines of a configuration file.
#pragma once

#include <string>
#include <string_view>

#include "config/configuration.h"

namespace config {

/// Reads the settings from the content of a file. Throws BadConfiguration for the first line that
/// is not understood.
/// @param file  its name, for the message
[[nodiscard]] Configuration readLines(const std::string& file, std::string_view content);

} // namespace config
