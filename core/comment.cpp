// SPDX-License-Identifier: MIT
#include "core/core.h"

#include <cerrno>
#include <cstdarg>

void core::printComment(const char* format, ...)
{
    const int callersError = errno;
    std::array<char, kMessageSize> message;

    std::va_list arguments;
    va_start(arguments, format);
    vformatBounded(message, format, arguments);
    va_end(arguments);

    std::printf("//<!-- %s-->\n", message.data());
    std::fflush(stdout);
    errno = callersError;
}
