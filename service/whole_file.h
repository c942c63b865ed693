// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

namespace service {

/// All bytes of a file; nothing if it cannot be opened or read.
[[nodiscard]] std::optional<std::string> readWholeFile(const std::string& path);

} // namespace service
