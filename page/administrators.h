// SPDX-License-Identifier: MIT
//
// administrators.h: which accounts may change things. The configuration names some; the one that
// the first setup has made stands in a file of its own, as the configuration is for people to
// write.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "config/configuration.h"

namespace page {

inline constexpr const char* kKeptFolder = "/var/lib/vokcontrol";
/// One name a line.
inline constexpr const char* kAdministratorsFile = "/var/lib/vokcontrol/administrators";

class Administrators {
  public:
    explicit Administrators(const config::Configuration& settings);

    [[nodiscard]] bool contains(std::string_view account) const;
    [[nodiscard]] bool areNone() const { return names_.empty(); }

    /// Makes the first administrator, unless there is one by now.
    /// @param account  a text without newlines
    /// @param create   makes the account; if it throws, nobody becomes administrator
    /// @return false if somebody else was faster
    [[nodiscard]] static bool makeFirst(const config::Configuration& settings,
                                        std::string_view account,
                                        const std::function<void()>& create);

  private:
    std::vector<std::string> names_;
};

} // namespace page
