// SPDX-License-Identifier: MIT
#pragma once

namespace sharestatus {

/// Marks a collection as running, unless another one is. The mark is advisory: looking and setting
/// are two steps, so two starts within one moment may both go on. Where the mark can neither be
/// opened nor created, the collection goes on without one.
///
/// @return false when a collection runs already and this one must not
[[nodiscard]] bool claimSemaphore();

/// Marks the collection as ended.
void releaseSemaphore();

} // namespace sharestatus
