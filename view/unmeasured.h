// SPDX-License-Identifier: MIT
//
// unmeasured.h: the shares whose space a collection has not found out, and why.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "view/share_row.h"

namespace view {

/// What kept a share from being measured. The first that applies counts.
enum class Obstacle {
    kShellCharacter, ///< its name could run in a shell, so the guard refuses it
    kSeparator,      ///< its name holds a character that ends names in the list of shares
    kFirstCharacter, ///< its name begins with one that the collector passes over
    kFailed,         ///< du has told nothing of its folder
    kNoRoom,         ///< the status was full before its turn came
};

struct Unmeasured {
    std::string name;
    Obstacle obstacle;
};

/// Looks which shares have not been measured. Of names that are broken into pieces, the pieces are
/// in the status; they are passed over if the whole name is known.
/// @param shares  the rows of a status
/// @param listed  the names of the shares that there are, if they are known
[[nodiscard]] std::vector<Unmeasured>
findUnmeasured(const std::vector<ShareRow>& shares,
               const std::optional<std::vector<std::string>>& listed);

} // namespace view
