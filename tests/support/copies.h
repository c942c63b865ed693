// SPDX-License-Identifier: MIT
//
// copies.h: memory for copies of texts, as much as a test likes.
#pragma once

namespace root {

/// How many copies of texts succeed before one fails; negative: all do.
extern int copiesLeft;

} // namespace root
