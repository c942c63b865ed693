// SPDX-License-Identifier: MIT
#include "sharestatus/fragment_walk.h"

#include <algorithm>
#include <cstring>

#include "sharestatus/fragment_format.h"
#include "sharestatus/status_format.h"

namespace sharestatus {

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
        if (startsName(at[0], at[1])) {
            const std::size_t copied = std::min(std::strlen(at), kMaxNameSize);
            cursor_ += copied + 1;
            return at;
        }
    }
    return nullptr;
}

} // namespace sharestatus
