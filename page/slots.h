// SPDX-License-Identifier: MIT
//
// slots.h: few pages are made at a time, so that many requests cannot take all of the appliance.
#pragma once

#include <optional>
#include <string>

#include "page/private_files.h"
#include "page/sessions.h"

namespace page {

inline constexpr int kSlots = 8;
/// Who has not logged in can have no more than these, so that they do not keep out those who have.
inline constexpr int kSlotsOfStrangers = 4;

/// Takes a slot, for as long as the descriptor is open. A process that ends gives back its own.
/// @return nothing if all of them are taken
[[nodiscard]] std::optional<Descriptor> takeSlot(bool isStranger,
                                                 const std::string& folder = kStateFolder);

} // namespace page
