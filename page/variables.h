// SPDX-License-Identifier: MIT
//
// variables.h: what the web server says about a request, in variables of the program's environment.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace page {

class Variables {
  public:
    Variables() = default;

    /// Copies the environment of this process.
    [[nodiscard]] static Variables ofEnvironment();

    /// A variable's value; empty if there is no such variable.
    [[nodiscard]] std::string_view operator[](std::string_view name) const;

    void set(std::string_view name, std::string_view value);

  private:
    std::map<std::string, std::string, std::less<>> values_;
};

/// Leaves this process, and what it starts, an environment of PATH, HOME, the C locale and, if
/// there is one, the time zone: what the web server passes on from browsers is not for the module's
/// scripts.
void cleanEnvironment();

} // namespace page
