// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace service {

/// All bytes of a file; none if it cannot be read.
[[nodiscard]] std::string readWholeFile(const std::string& path);

} // namespace service
