// SPDX-License-Identifier: MIT
//
// system_watch.h: watches a program from outside. This library stands before the C library, by
// being linked to a test or preloaded into a program, and writes down what the program asks of the
// system: each line that reaches system() as it stands, and each call of nice, sleep and daemon.
// Then it passes the call on.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace watch {

/// What has been written down so far, by all processes of the root, in order.
[[nodiscard]] std::vector<std::string> calls();

/// Lines that start so need none of the guard's shapes: a test has its reason for them.
void mayBeStrange(const std::string& lineStart);

/// The lines that the guard would not let run, since the last call of this, but for those above,
/// which are forgotten.
[[nodiscard]] std::vector<std::string> takeStrange();

/// Starts a new list, and forgets the two kinds of intervention below.
void restart();

/// The next line that starts so is not run; its caller gets this result and errno.
void answer(const std::string& lineStart, int result, int error);

/// When the next line that starts so has run, the action happens before its caller goes on.
void after(const std::string& lineStart, std::function<void()> action);

} // namespace watch
