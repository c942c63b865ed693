// SPDX-License-Identifier: MIT
#include "core/core.h"

#include <cstdarg>
#include <cstdio>

void core::vformatBounded(std::span<char> out, const char* format, std::va_list arguments)
{
    std::vsnprintf(out.data(), out.size(), format, arguments);
}

void core::formatBounded(std::span<char> out, const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    vformatBounded(out, format, arguments);
    va_end(arguments);
}
