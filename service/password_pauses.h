// SPDX-License-Identifier: MIT
//
// password_pauses.h: after each wrong password ("wall") a user waits longer before the next check.
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
    /// After this time without a wrong password, a user's first pause is the shortest again.
    static constexpr std::chrono::minutes kMemory{5};

    /// @param longest  the longest pause; 0 for none
    explicit PasswordPauses(std::chrono::milliseconds longest) : longest_(longest) {}

    /// How long a user's next check has to wait; 0 if it does not have to.
    [[nodiscard]] std::chrono::milliseconds remaining(uid_t user, Clock::time_point now) const;

    /// Records the answer to a user's check. A right password ends the user's pauses, a wrong one
    /// doubles them; any other answer changes nothing.
    void judge(uid_t user, std::string_view answer, Clock::time_point now);

  private:
    struct Failures {
        std::chrono::milliseconds pause;
        Clock::time_point last;
    };

    [[nodiscard]] const Failures* failuresOf(uid_t user, Clock::time_point now) const;

    std::chrono::milliseconds longest_;
    std::map<uid_t, Failures> failures_; ///< few, because strangers' requests are not run
};

/// Whether a request asks for a password to be checked.
[[nodiscard]] bool isPasswordCheck(std::string_view request);

} // namespace service
