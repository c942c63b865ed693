// SPDX-License-Identifier: MIT
#include "sharestatus/fragment_walk.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "core/bytes.h"
#include "sharestatus/status_format.h"

namespace sharestatus {
namespace {

bool isSeparator(char c)
{
    return c == ',' || c == '"' || c == ']';
}

/// Whether the character at a position can start a name. U+0080 to U+00BF (lead byte 0xC2) are
/// signs and blanks, not letters, so they are skipped.
bool startsName(const char* at)
{
    const std::uint8_t first = core::byteOf(at[0]);
    if (core::isAsciiAlphanumeric(first) || first == '_') {
        return true;
    }
    if (first < 0xC3 || first > 0xDF) {
        return false;
    }
    const std::uint8_t second = core::byteOf(at[1]);
    return second >= 0x80 && second <= 0xBF;
}

} // namespace

FragmentWalk::FragmentWalk(char* line) : line_(line), end_(std::strlen(line)), cursor_(end_)
{
    const char* bracket = std::strchr(line, '[');
    if (bracket == nullptr) {
        return;
    }
    cursor_ = static_cast<std::size_t>(bracket - line) + 1;
    std::replace_if(line, line + end_, isSeparator, '\0');
}

const char* FragmentWalk::next()
{
    while (cursor_ < end_) {
        const char* at = line_ + cursor_;
        ++cursor_;
        if (startsName(at)) {
            const std::size_t copied = std::min(std::strlen(at), kMaxNameSize);
            cursor_ += copied + 1;
            return at;
        }
    }
    return nullptr;
}

} // namespace sharestatus
