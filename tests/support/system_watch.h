// SPDX-License-Identifier: MIT
//
// system_watch.h: records a program's calls. This library comes before the C library, because it is
// linked to a test or preloaded into a program. It records each line that reaches system(),
// unchanged, and each call of nice, sleep and daemon. Then it makes the call.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace watch {

/// The calls recorded so far, from all processes of the root, in order.
[[nodiscard]] std::vector<std::string> calls();

/// Lines with this start need no shape of the guard; call it if a test has a reason for them.
void mayBeStrange(const std::string& lineStart);

/// The lines that the guard would refuse, since the last call, except those allowed by
/// mayBeStrange, which it forgets.
[[nodiscard]] std::vector<std::string> takeStrange();

/// Starts a new list, and forgets the calls of answer() and after().
void restart();

/// Does not run the next line with this start; its caller gets this result and errno.
void answer(const std::string& lineStart, int result, int error);

/// Runs the action after the next line with this start, before its caller continues.
void after(const std::string& lineStart, std::function<void()> action);

} // namespace watch
