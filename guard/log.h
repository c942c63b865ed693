// SPDX-License-Identifier: MIT
//
// log.h: the guard's log of lines that it refuses.
#pragma once

#include "guard/shapes.h"

namespace guard {

/// Writes "PROGRAM: a shell line was refused: OPERATION, PLACE" to the log, in one piece.
void logRefusal(const Verdict& verdict);

} // namespace guard
