// SPDX-License-Identifier: MIT
//
// token.h: random tokens. A browser keeps one in a cookie that no other site can read, and every
// form carries it in a hidden field: a request that changes something must show both.
#pragma once

#include <string>
#include <string_view>

namespace page {

/// 32 hexadecimal digits from the system's source of random numbers.
[[nodiscard]] std::string makeToken();

/// Whether a text has the form of a token.
[[nodiscard]] bool isToken(std::string_view text);

/// Whether two texts are the same token. How long that takes does not tell where they differ.
[[nodiscard]] bool isSameToken(std::string_view one, std::string_view other);

} // namespace page
