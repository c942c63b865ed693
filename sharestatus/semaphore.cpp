// SPDX-License-Identifier: MIT
#include "sharestatus/semaphore.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <ctime>

#include "core/core.h"
#include "sharestatus/semaphore_format.h"

namespace sharestatus {
namespace {

std::uint32_t now()
{
    return static_cast<std::uint32_t>(std::time(nullptr));
}

Semaphore readSemaphore()
{
    const core::File file = core::openFile(kSemaphoreFile, "r");
    if (!file) {
        return {};
    }
    std::array<char, kSemaphoreSize> bytes;
    const std::size_t got = std::fread(bytes.data(), 1, bytes.size(), file.get());
    return decodeSemaphore({bytes.data(), got});
}

void writeSemaphore(FILE* file, const Semaphore& semaphore)
{
    const auto bytes = encodeSemaphore(semaphore);
    std::fwrite(bytes.data(), 1, bytes.size(), file);
}

} // namespace

bool claimSemaphore()
{
    const Semaphore found = readSemaphore();
    if (found.isBusyAt(now())) {
        return false;
    }
    core::File file = core::openFile(kSemaphoreFile, "r+");
    if (!file) {
        file = core::openFile(kSemaphoreFile, "w");
    }
    if (file) {
        writeSemaphore(file.get(), {.busy = 1, .reserved = found.reserved, .time = now()});
    }
    return true;
}

void releaseSemaphore()
{
    // "r+" does not create the file: if the mark could not be made, releasing it makes none.
    const core::File file = core::openFile(kSemaphoreFile, "r+");
    if (file) {
        writeSemaphore(file.get(), {.busy = 0, .reserved = 0, .time = now()});
    }
}

} // namespace sharestatus
