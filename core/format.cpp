// SPDX-License-Identifier: MIT
#include "core/core.h"

#include <cstdarg>
#include <cstdio>

void core::formatBounded(std::span<char> out, const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(out.data(), out.size(), format, arguments);
    va_end(arguments);
}
