// SPDX-License-Identifier: MIT
#include "tests/support/clock.h"

std::optional<std::time_t> root::clock;

/// The C library's time(), unless the test sets the clock.
extern "C" std::time_t time(std::time_t* result) noexcept
{
    std::timespec now{};
    std::timespec_get(&now, TIME_UTC);
    const std::time_t told = root::clock.value_or(now.tv_sec);
    if (result != nullptr) {
        *result = told;
    }
    return told;
}
