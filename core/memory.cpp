// SPDX-License-Identifier: MIT
#include "core/core.h"

#include <cstdlib>
#include <cstring>

void core::MemoryReleaser::operator()(void* block) const noexcept
{
    std::free(block);
}

core::Text core::copyText(const char* text)
{
    return Text(::strdup(text));
}
