// SPDX-License-Identifier: MIT
#include "core/core.h"

#include <cstdlib>

std::int64_t core::decimalNumber(const char* text)
{
    // Not strtol: its result has 32 bits on some of the module's machines and 64 on others.
    constexpr int kDecimal = 10;
    return std::strtoll(text, nullptr, kDecimal);
}

std::int32_t core::decimalInt(const char* text)
{
    return static_cast<std::int32_t>(decimalNumber(text));
}
