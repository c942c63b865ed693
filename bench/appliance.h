// SPDX-License-Identifier: MIT
//
// appliance.h: fills the root in which the benchmarks run.
#pragma once

#include <string_view>

namespace bench {

inline constexpr int kUsers = 10;

/// Makes every administration script write this into the file that is its argument.
void stubScripts(std::string_view output);

/// Makes the user script list the benchmarks' users.
void makeUsers();

/// Discards standard output as long as the object exists.
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
