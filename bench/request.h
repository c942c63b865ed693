// SPDX-License-Identifier: MIT
//
// request.h: makes requests as callers of process_command do.
#pragma once

#include <string>
#include <string_view>

namespace bench {

/// A command without parameters.
[[nodiscard]] std::string frame(std::string_view code);

/// Puts a frame into fin_buf, zeros after it.
void load(std::string_view frame);

} // namespace bench
