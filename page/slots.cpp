// SPDX-License-Identifier: MIT
#include "page/slots.h"

#include <sys/file.h>

namespace page {

std::optional<Descriptor> takeSlot(bool isStranger, const std::string& folder)
{
    requirePrivateFolder(folder);
    const std::string slots = folder + "/slots";
    requirePrivateFolder(slots);
    // Those that strangers cannot have come first.
    for (int slot = (isStranger ? kSlotsOfStrangers : kSlots) - 1; slot >= 0; --slot) {
        Descriptor file = openPrivateFile(slots + "/" + std::to_string(slot));
        if (::flock(file.number(), LOCK_EX | LOCK_NB) == 0) {
            return file;
        }
    }
    return std::nullopt;
}

} // namespace page
