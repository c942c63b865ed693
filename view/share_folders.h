// SPDX-License-Identifier: MIT
//
// share_folders.h: the folders that shares have.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "view/capacity.h"

namespace view {

/// The folders in /share that may be internal shares, in the order of their bytes. Folders on
/// another file system are those of external shares; a hidden folder and "lost+found" are no shares
/// at all.
/// @return nothing if /share cannot be read
[[nodiscard]] std::optional<std::vector<std::string>>
listShareFolders(const char* folder = kShareFolder);

} // namespace view
