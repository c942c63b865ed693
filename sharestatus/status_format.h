// SPDX-License-Identifier: MIT
//
// status_format.h: the share status, byte by byte: the layout of a share's record, of the table of
// records (the payload), and of the status file. No other file has it. The functions compute on
// values alone: no files, no traces.
//
//   file      0     4    L: the payload's length plus one, 32 bits little-endian
//             4     L-1  payload
//             3+L   1    check: the sum of the payload's bytes, modulo 16
//             4+L        zeros up to 1 MiB, so that the file never shrinks while it is read
//
//   payload   0     5    zeros
//             5     2    number of records, 16 bits little-endian
//             7     3    zeros
//             10         records, back to back
//
//   record    0     2    space used, 16 bits little-endian, in the unit of byte 2
//             2     1    "K", "M" or "G"; 0 if the share could not be measured
//             3     8    date of the last backup, MMDDYYYY; zeros if there is none
//             11    1    state of the last backup, a digit; 0 if there is none
//             12    n    name, 1 to 64 bytes
//             12+n  1    newline
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string_view>

namespace sharestatus {

inline constexpr const char* kStatusFile = "/etc/pelconfig/vokcontrol/__shrStatus";

// A record.
inline constexpr std::size_t kUsageOffset = 0;
inline constexpr std::size_t kUsageSize = 2;
inline constexpr std::size_t kUnitOffset = kUsageOffset + kUsageSize;
inline constexpr std::size_t kDateOffset = kUnitOffset + 1;
inline constexpr std::size_t kDateSize = 8;
inline constexpr std::size_t kStateOffset = kDateOffset + kDateSize;
inline constexpr std::size_t kNameOffset = kStateOffset + 1;
inline constexpr std::size_t kMaxNameSize = 64;
inline constexpr std::size_t kWorkRecordSize = kNameOffset + kMaxNameSize;
inline constexpr std::size_t kMaxEntrySize = kWorkRecordSize + 1;
static_assert(kNameOffset == 12 && kWorkRecordSize == 76);

// The payload.
inline constexpr std::size_t kCountOffset = 5;
inline constexpr std::size_t kCountSize = 2;
inline constexpr std::size_t kHeaderSize = kCountOffset + kCountSize + 3;
inline constexpr std::size_t kMaxPayloadSize = 4096;

// The file.
inline constexpr std::size_t kLengthSize = 4;
inline constexpr std::size_t kCheckSize = 1;
inline constexpr std::size_t kMaxLength = kMaxPayloadSize + kCheckSize;
inline constexpr std::size_t kMaxImageSize = kLengthSize + kMaxLength;
inline constexpr std::size_t kStatusFileSize = 1048576;

/// A unit of the space used. The thresholds mix powers of two and of ten, as clients expect.
struct Unit {
    char letter;
    std::uint32_t kibibytes; ///< in one unit
    std::int64_t most;       ///< largest size in this unit, in KiB
};

inline constexpr auto kUnits = std::to_array<Unit>({
    {'K', 1, 1024},
    {'M', 1000, 1000000},
    {'G', 1000000, std::numeric_limits<std::int64_t>::max()},
});

/// @return the unit of a letter; null for another byte
[[nodiscard]] constexpr const Unit* findUnit(char letter)
{
    const auto* found = std::ranges::find(kUnits, letter, &Unit::letter);
    return (found != kUnits.end()) ? found : nullptr;
}

/// A record as the collector fills it, with room for the longest name.
using WorkRecord = std::array<char, kWorkRecordSize>;

/// Writes record after record into a share status buffer.
class TableWriter {
  public:
    /// Clears the buffer. append() and finish() need a buffer with room for what they write.
    explicit TableWriter(std::span<char> buffer);

    /// Whether the longest record still fits.
    [[nodiscard]] bool hasRoom() const;

    /// Appends the first 12 bytes of a record, the name cut to 64 bytes, and the newline. Call it
    /// only if hasRoom().
    void append(const WorkRecord& record, std::string_view name);

    /// Stores the number of records in the header.
    void finish();

    [[nodiscard]] std::uint16_t count() const { return count_; }
    [[nodiscard]] std::size_t size() const { return size_; }

  private:
    std::span<char> buffer_;
    std::size_t size_ = kHeaderSize;
    std::uint16_t count_ = 0;
};

/// A record in a payload; name and date point into the payload.
struct ShareEntry {
    std::uint16_t used;
    char unit;
    std::string_view date;
    char state;
    std::string_view name;
};

/// Reads the records of a payload, one after the other.
class TableReader {
  public:
    explicit TableReader(std::string_view payload);

    /// The next record; nothing after the last one, or if the payload is no table of records.
    [[nodiscard]] std::optional<ShareEntry> next();

    /// Whether every record that the header counts has been read, and no bytes follow them. An
    /// empty payload (no share list could be made) is whole too.
    [[nodiscard]] bool isWhole() const;

    /// Whether no bytes follow what has been read, even if the header counts more records.
    [[nodiscard]] bool isAtEnd() const { return rest_.empty(); }

  private:
    std::string_view rest_;
    std::uint16_t missing_ = 0;
};

/// The sum of the bytes, modulo 16.
[[nodiscard]] std::uint8_t checksum(std::string_view payload);

/// The start of a status file: length, payload, check.
struct StatusImage {
    std::array<char, kMaxImageSize> bytes;
    std::size_t size;

    [[nodiscard]] std::string_view text() const { return {bytes.data(), size}; }
};

/// Builds the image of a payload of at most 4096 bytes.
[[nodiscard]] StatusImage encodeStatus(std::string_view payload);

/// The fields at the start of a status file. Bytes that the file does not have are left out.
struct StatusReading {
    std::uint32_t length; ///< L as stored; bytes after the end count as 0
    bool isInBounds;      ///< L is neither too small nor too large
    std::string_view
        payload; ///< this field and the next two are set only if isInBounds, from existing bytes
    std::uint8_t sum;
    std::uint8_t check; ///< 0 if missing
    bool isComplete;    ///< no byte is missing

    [[nodiscard]] bool isGood() const { return isComplete && sum == check; }
};

[[nodiscard]] StatusReading decodeStatus(std::string_view image);

} // namespace sharestatus
