// SPDX-License-Identifier: MIT
#include "tests/support/copies.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

int root::copiesLeft = -1;

/// The C library's, but memory runs out on demand.
extern "C" char* strdup(const char* text) noexcept
{
    if (root::copiesLeft == 0) {
        errno = ENOMEM;
        return nullptr;
    }
    --root::copiesLeft;
    const std::size_t size = std::strlen(text) + 1;
    void* copy = std::malloc(size);
    return (copy == nullptr) ? nullptr : static_cast<char*>(std::memcpy(copy, text, size));
}
