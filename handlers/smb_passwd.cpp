// SPDX-License-Identifier: MIT
#include "handlers/smb_passwd.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <limits>
#include <new>
#include <span>
#include <string_view>

#include "core/bytes.h"
#include "core/core.h"

struct SmbPasswdHandle {
    core::File file;
    std::array<char, 1024> line;
};

namespace handlers {
namespace {

// Each of these takes a field and its colon from the start of the rest of a line, and returns
// whether the field is there and valid.

/// Copies a field, cut to the room; zeros fill the rest.
/// @param room  at most out.size(), or one less for a text with a terminator
bool takeText(std::string_view& line, std::span<char> out, std::size_t room)
{
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) {
        return false;
    }
    const std::size_t size = line.copy(out.data(), std::min(colon, room));
    std::memset(out.data() + size, 0, out.size() - size);
    line.remove_prefix(colon + 1);
    return true;
}

bool takeColon(std::string_view& line)
{
    if (!line.starts_with(':')) {
        return false;
    }
    line.remove_prefix(1);
    return true;
}

/// The value of each character as a digit.
constexpr std::uint8_t kNoDigit = 0xFF;
constexpr std::array<std::uint8_t, 256> kDigits = [] {
    std::array<std::uint8_t, 256> digits{};
    digits.fill(kNoDigit);
    for (std::uint8_t value = 0; value < 16; ++value) {
        digits[core::byteOf("0123456789abcdef"[value])] = value;
        digits[core::byteOf("0123456789ABCDEF"[value])] = value;
    }
    return digits;
}();

/// Takes the number that a line begins with; GREATEST if it is larger.
template <int kBase> std::int64_t takeDigits(std::string_view& line, std::int64_t greatest)
{
    std::int64_t number = 0;
    std::size_t size = 0;
    for (; size < line.size(); ++size) {
        const std::uint8_t digit = kDigits[core::byteOf(line[size])];
        if (digit >= kBase) {
            break;
        }
        number = std::min(number * kBase + digit, greatest);
    }
    line.remove_prefix(size);
    return number;
}

bool takeId(std::string_view& line, std::int32_t& id)
{
    using Limits = std::numeric_limits<std::int32_t>;
    const bool isNegative = line.starts_with('-');
    if (isNegative || line.starts_with('+')) {
        line.remove_prefix(1);
    }
    if (line.starts_with(':')) {
        return false;
    }
    const std::int64_t sign = isNegative ? -1 : 1;
    id = static_cast<std::int32_t>(
        sign * takeDigits<10>(line, sign * (isNegative ? Limits::min() : Limits::max())));
    return takeColon(line);
}

/// The flag of each character.
constexpr std::uint8_t kNoFlag = 0x80;
constexpr std::array<std::uint8_t, 256> kFlagBits = [] {
    std::array<std::uint8_t, 256> bits{};
    bits.fill(kNoFlag);
    bits[' '] = bits['['] = bits[']'] = 0;
    bits['U'] = kSmbUser;
    bits['N'] = kSmbNoPassword;
    bits['D'] = kSmbDisabled;
    bits['X'] = kSmbNeverExpires;
    bits['W'] = kSmbWorkstation;
    return bits;
}();

bool takeFlags(std::string_view& line, std::uint8_t& flags)
{
    std::uint8_t bits = 0;
    std::size_t size = 0;
    for (; size < line.size(); ++size) {
        const std::uint8_t bit = kFlagBits[core::byteOf(line[size])];
        if (bit == kNoFlag) {
            break;
        }
        bits |= bit;
    }
    flags = bits;
    line.remove_prefix(size);
    return takeColon(line);
}

bool takeLastChange(std::string_view& line, std::uint32_t& lastChange)
{
    constexpr std::string_view kLabel = "LCT-";
    if (!line.starts_with(kLabel)) {
        return false;
    }
    line.remove_prefix(kLabel.size());
    using Limits = std::numeric_limits<std::uint32_t>;
    lastChange = static_cast<std::uint32_t>(takeDigits<16>(line, Limits::max()));
    return takeColon(line);
}

bool readAccount(std::string_view line, SmbPasswdEntry& entry)
{
    return takeText(line, entry.name, sizeof entry.name - 1) && takeId(line, entry.uid) &&
           takeText(line, entry.lmHash, sizeof entry.lmHash - 1) &&
           // A longer hash has no terminator; the password check refuses it for that.
           takeText(line, entry.ntHash, sizeof entry.ntHash) && takeFlags(line, entry.flags) &&
           takeLastChange(line, entry.lastChange);
}

} // namespace
} // namespace handlers

int openSmbPasswd(SmbPasswdHandle** out, const char* path)
{
    auto* handle = new (std::nothrow) SmbPasswdHandle{};
    if (handle == nullptr) {
        errno = ENOMEM;
        return -1;
    }
    handle->file = core::openFile(path, "r");
    if (!handle->file) {
        const int error = errno;
        delete handle;
        errno = error;
        return -1;
    }
    *out = handle;
    return 0;
}

int readSmbPasswdEntry(SmbPasswdHandle* handle, SmbPasswdEntry* entry)
{
    do {
        if (!core::readLine(handle->file.get(), handle->line)) {
            return -1;
        }
    } while (handle->line[0] == '#');

    std::string_view line = handle->line.data();
    // Drops the newline, or the last character of a line without one.
    line = line.substr(0, line.empty() ? 0 : line.size() - 1);
    if (!handlers::readAccount(line, *entry)) {
        errno = EINVAL;
        return -1;
    }
    return 0;
}

int rewindSmbPasswd(SmbPasswdHandle* handle)
{
    std::rewind(handle->file.get());
    return 0;
}

int closeSmbPasswd(SmbPasswdHandle* handle)
{
    delete handle;
    return 0;
}
