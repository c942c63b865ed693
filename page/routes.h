// SPDX-License-Identifier: MIT
//
// routes.h: which page answers a request.
#pragma once

#include <cstdio>
#include <string>

namespace page {

/// Answers the request that the environment and a stream hold: headers and page, to be written to
/// standard output as they are.
[[nodiscard]] std::string answer(std::FILE* body);

} // namespace page
