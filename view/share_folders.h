// SPDX-License-Identifier: MIT
//
// share_folders.h: lists the folders of the shares.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "view/capacity.h"

namespace view {

/// The folders in /share that may be internal shares, in the order of their bytes. Left out are
/// folders on another file system (external shares), hidden folders and "lost+found".
/// @return nothing if /share cannot be read
[[nodiscard]] std::optional<std::vector<std::string>>
listShareFolders(const char* folder = kShareFolder);

} // namespace view
