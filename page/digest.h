// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace page {

/// The SHA-256 digest of a text, in hexadecimal digits.
[[nodiscard]] std::string digestOf(std::string_view text);

} // namespace page
