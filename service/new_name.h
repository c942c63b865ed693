// SPDX-License-Identifier: MIT
//
// new_name.h: names that a new user or share must not have. What reads such a name after the
// module, the file server's configuration and the password file, would take it for something else.
#pragma once

#include <cstdint>
#include <string_view>

namespace service {

enum class NewName : std::uint8_t {
    kGood,
    kMisread, ///< ":", ",", "=" or "%", a "@", "+" or "." first, a blank first or last
    kReserved ///< it means something else already
};

/// What a new user's name would be. Reserved are the file server's own sections (global, homes,
/// printers) and the appliance's own accounts and groups: root, daemon, nobody, and those of
/// /etc/passwd and /etc/group whose number is not one of 1000 to 59999, which people have. Letters
/// of both cases count as the same. An empty name is good; the command itself judges it.
[[nodiscard]] NewName judgeNewUser(std::string_view name);

/// The same for a new share; a share may have an account's name.
[[nodiscard]] NewName judgeNewShare(std::string_view name);

} // namespace service
