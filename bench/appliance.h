// SPDX-License-Identifier: MIT
//
// appliance.h: what the benchmarks find in the root that they run in.
#pragma once

#include <string_view>

namespace bench {

inline constexpr int kUsers = 10;

/// Has every script of the administration layer write this into the file that it is given.
void stubScripts(std::string_view output);

/// Has the user script list so many users.
void makeUsers();

/// Sends standard output nowhere for as long as it lives.
class Silence {
  public:
    Silence();
    ~Silence();
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

  private:
    int output_;
};

} // namespace bench
