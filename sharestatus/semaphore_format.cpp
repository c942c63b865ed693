// SPDX-License-Identifier: MIT
#include "sharestatus/semaphore_format.h"

#include <algorithm>
#include <span>

#include "core/bytes.h"

namespace sharestatus {
namespace {

constexpr std::size_t kBusyOffset = 0;
constexpr std::size_t kReservedOffset = kBusyOffset + 1;
constexpr std::size_t kTimeOffset = kReservedOffset + 1;
constexpr std::size_t kTimeSize = 4;
static_assert(kTimeOffset + kTimeSize == kSemaphoreSize);

} // namespace

bool Semaphore::isBusyAt(std::uint32_t now) const
{
    // The difference is taken modulo 2^32 and then read as signed, so that it is right even if the
    // clock's range ends between the two times.
    return busy != 0 && static_cast<std::int32_t>(now - time) < kBusySeconds;
}

std::array<char, kSemaphoreSize> encodeSemaphore(const Semaphore& semaphore)
{
    std::array<char, kSemaphoreSize> bytes{};
    bytes[kBusyOffset] = static_cast<char>(semaphore.busy);
    bytes[kReservedOffset] = static_cast<char>(semaphore.reserved);
    core::putU32(std::span(bytes).subspan<kTimeOffset, kTimeSize>(), semaphore.time);
    return bytes;
}

Semaphore decodeSemaphore(std::string_view bytes)
{
    std::array<char, kSemaphoreSize> whole{};
    std::ranges::copy(bytes.substr(0, kSemaphoreSize), whole.begin());
    return {
        .busy = core::byteOf(whole[kBusyOffset]),
        .reserved = core::byteOf(whole[kReservedOffset]),
        .time = core::getU32(std::span(whole).subspan<kTimeOffset, kTimeSize>()),
    };
}

} // namespace sharestatus
