// SPDX-License-Identifier: MIT
//
// login_pauses.h: wrong passwords slow down: whoever was wrong about an account has to wait before
// the next attempt at it, each time longer, and after many wrong passwords everybody has to wait a
// little. Kept in a file, as each request has a process of its own.
#pragma once

#include <string>
#include <string_view>

#include "page/clock.h"
#include "page/sessions.h"

namespace page {

class LoginPauses {
  public:
    /// After a wrong password an account has to wait a second, after each further one twice as
    /// long.
    static constexpr Time kLongestOfAccount{64};
    /// So many wrong passwords, of whatever accounts, slow nobody else down.
    static constexpr unsigned kFreeOfAll = 10;
    static constexpr Time kLongestOfAll{16};
    /// So long after the last wrong password all begins anew.
    static constexpr Time kMemory = std::chrono::minutes(15);

    explicit LoginPauses(const std::string& folder = kStateFolder);

    /// Asks for an attempt. It counts as wrong until it is said to be right, so that attempts at
    /// the same time do not get around the pause.
    /// @return how long to wait before the next one may be made; 0 if this one may be made now
    [[nodiscard]] Time attempt(std::string_view account, Time now);

    /// The attempt was right; the account's pauses end.
    void succeeded(std::string_view account, Time now);

  private:
    std::string path_;
};

} // namespace page
