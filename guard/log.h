// SPDX-License-Identifier: MIT
//
// log.h: what the guard says about lines that it does not run.
#pragma once

#include "guard/shapes.h"

namespace guard {

/// Writes "PROGRAM: a shell line was refused: OPERATION, PLACE" to the log, in one piece.
void logRefusal(const Verdict& verdict);

} // namespace guard
