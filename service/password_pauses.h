// SPDX-License-Identifier: MIT
//
// password_pauses.h: who asks for passwords ("wall") and is wrong has to wait before the next one,
// each time longer.
#pragma once

#include <chrono>
#include <map>
#include <string_view>
#include <sys/types.h>

namespace service {

class PasswordPauses {
  public:
    using Clock = std::chrono::steady_clock;

    static constexpr std::chrono::milliseconds kFirst{500};
    /// So long after the last wrong password a user begins anew.
    static constexpr std::chrono::minutes kMemory{5};

    /// @param longest  no pause is longer; 0 for none at all
    explicit PasswordPauses(std::chrono::milliseconds longest) : longest_(longest) {}

    /// How long a user's next check has to wait; 0 if it need not.
    [[nodiscard]] std::chrono::milliseconds remaining(uid_t user, Clock::time_point now) const;

    /// Takes note of what a check of a user's was answered. A right password ends the user's
    /// pauses, a wrong one doubles them; any other answer changes nothing.
    void judge(uid_t user, std::string_view answer, Clock::time_point now);

  private:
    struct Failures {
        std::chrono::milliseconds pause;
        Clock::time_point last;
    };

    [[nodiscard]] const Failures* failuresOf(uid_t user, Clock::time_point now) const;

    std::chrono::milliseconds longest_;
    std::map<uid_t, Failures> failures_; ///< of users that may ask, which are few
};

/// Whether a request asks for a password to be checked.
[[nodiscard]] bool isPasswordCheck(std::string_view request);

} // namespace service
