// SPDX-License-Identifier: MIT
//
// unmeasured.h: the shares that a collection has not measured, and why.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "view/share_row.h"

namespace view {

/// What kept a share from being measured. The first that applies counts.
enum class Obstacle {
    kShellCharacter, ///< its name could run in a shell, so the guard refuses it
    kSeparator,      ///< its name contains a character that ends names in the list of shares
    kFirstCharacter, ///< its name begins with a character that the collector skips
    kFailed,         ///< du has printed nothing for its folder
    kNoRoom,         ///< the status was full before its turn came
};

struct Unmeasured {
    std::string name;
    Obstacle obstacle;
};

/// Finds the shares that have not been measured. If a name was broken into pieces, the status
/// contains the pieces; they are left out if the whole name is known.
/// @param shares  the rows of a status
/// @param listed  the names of all shares, if they are known
[[nodiscard]] std::vector<Unmeasured>
findUnmeasured(const std::vector<ShareRow>& shares,
               const std::optional<std::vector<std::string>>& listed);

} // namespace view
