// SPDX-License-Identifier: MIT
//
// request.h: requests of the command service as its callers make them.
#pragma once

#include <string>
#include <string_view>

namespace bench {

/// A command without parameters.
[[nodiscard]] std::string frame(std::string_view code);

/// Puts a frame into fin_buf, zeros behind it.
void load(std::string_view frame);

} // namespace bench
