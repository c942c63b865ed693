// SPDX-License-Identifier: MIT
//
// own_tmp.h: the module's work files have fixed names in /tmp. Whoever can lay down files there
// could put words into its mouth, or have root write to a place of his choice.
#pragma once

namespace page {

/// Whether nobody but root can lay down files in a folder.
[[nodiscard]] bool isClosedToOthers(const char* folder);

/// Sees to it that root's /tmp is closed to others: if it is not, this process gets the service's,
/// /run/vokcontrol/tmp, in a mount space of its own. Other accounts than root take /tmp as it is.
/// Throws std::runtime_error if root cannot have such a /tmp; then the module must not be called.
void requireOwnTmp();

} // namespace page
