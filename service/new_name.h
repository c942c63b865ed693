// SPDX-License-Identifier: MIT
//
// new_name.h: names that a new user or share must not have, because the file server's configuration
// or the password file would read them as something else.
#pragma once

#include <cstdint>
#include <string_view>

namespace service {

enum class NewName : std::uint8_t {
    kGood,
    kMisread, ///< contains ":", ",", "=" or "%", begins with "@", "+" or ".", or has a blank at an
              ///< end
    kReserved ///< is the name of something else already
};

/// Judges a new user's name. Reserved are the sections of the file server's configuration (global,
/// homes, printers) and the appliance's own accounts and groups: root, daemon, nobody, and all in
/// /etc/passwd and /etc/group whose number is not from 1000 to 59999, the numbers of people.
/// Capital and small letters are the same. An empty name is good: the command itself refuses it.
[[nodiscard]] NewName judgeNewUser(std::string_view name);

/// The same for a new share; a share may have an account's name.
[[nodiscard]] NewName judgeNewShare(std::string_view name);

} // namespace service
