// SPDX-License-Identifier: MIT
#pragma once

namespace sharestatus {

/// Marks a collection as running, unless another one runs. The mark is advisory: it is read and
/// written in two steps, so two collections that start at the same moment may both run. If the mark
/// can neither be opened nor created, the collection runs without one.
///
/// @return false if another collection runs and this one must not
[[nodiscard]] bool claimSemaphore();

/// Marks the collection as ended.
void releaseSemaphore();

} // namespace sharestatus
