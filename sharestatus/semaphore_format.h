// SPDX-License-Identifier: MIT
//
// semaphore_format.h: the bytes of the mark that prevents two collections at once.
//
//   0  1  busy: 1 while a collection runs, 0 after it has ended
//   1  1  reserved
//   2  4  time of the last change, seconds since the epoch, 32 bits little-endian
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace sharestatus {

inline constexpr const char* kSemaphoreFile = "/etc/pelconfig/vokcontrol/__shrsem";
inline constexpr std::size_t kSemaphoreSize = 6;

/// A busy mark is valid for this time; after it the collection counts as dead.
inline constexpr std::int32_t kBusySeconds = 7200;

struct Semaphore {
    std::uint8_t busy = 0;
    std::uint8_t reserved = 0;
    std::uint32_t time = 0;

    /// Whether a collection runs at a time, in seconds as the file holds it. A mark from the future
    /// is valid.
    [[nodiscard]] bool isBusyAt(std::uint32_t now) const;
};

[[nodiscard]] std::array<char, kSemaphoreSize> encodeSemaphore(const Semaphore& semaphore);

/// Bytes that are missing from a short file count as 0: an empty file is not busy.
[[nodiscard]] Semaphore decodeSemaphore(std::string_view bytes);

} // namespace sharestatus
