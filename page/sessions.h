// SPDX-License-Identifier: MIT
//
// sessions.h: who has logged in. The browser keeps a random token in a cookie; a session is a file
// here, whose name is a hash of the token: who sees the folder's listing has no token. Sessions are
// gone when the appliance starts anew.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "page/clock.h"

namespace page {

inline constexpr const char* kStateFolder = "/run/vokpage";

struct Session {
    std::string account;
    std::string formToken; ///< what forms of this session carry
};

class Sessions {
  public:
    /// A session ends so long after its last request, and so long after its login.
    static constexpr Time kIdle = std::chrono::minutes(30);
    static constexpr Time kLongest = std::chrono::hours(12);
    /// With one more than these, the one that was used least lately ends.
    static constexpr std::size_t kMost = 100;

    /// Makes the folder if it is not there.
    explicit Sessions(std::string folder = kStateFolder);

    /// Begins a session.
    /// @param account  a text without newlines
    /// @return the token for the browser
    [[nodiscard]] std::string begin(std::string_view account, Time now);

    /// The session of a token that a browser shows, and notes that it was used; nothing if it has
    /// ended or never was.
    [[nodiscard]] std::optional<Session> find(std::string_view token, Time now);

    /// Ends a session, if there is such a one.
    void end(std::string_view token);

  private:
    [[nodiscard]] std::string pathOf(std::string_view token) const;
    void makeRoom(Time now) const;

    std::string folder_;
};

} // namespace page
