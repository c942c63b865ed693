// SPDX-License-Identifier: MIT
//
// routes.h: which page answers a request, and who may ask for it.
#pragma once

#include <span>
#include <string>

#include "page/layout.h"
#include "page/variables.h"

namespace page {

/// All pages, in the order of the navigation.
[[nodiscard]] std::span<const PageEntry> pages();

/// Answers a request: headers and page, to be written to standard output as they are.
/// @param body  the descriptor that a form is read from
[[nodiscard]] std::string answer(const Variables& variables, int body);

/// Answers a request that is not served.
/// @param status  one of RefusalStatus
[[nodiscard]] std::string refuse(const Variables& variables, int status, const std::string& reason);

} // namespace page
