// SPDX-License-Identifier: MIT
#include "view/capacity.h"

#include <algorithm>
#include <sys/statvfs.h>

#include "text/translation.h"
#include "view/wording.h"

namespace view {
unsigned Capacity::percentFull() const
{
    // Ten binary digits fewer keep the product within 64 bits.
    const bool isHuge = used + free > (std::uint64_t{1} << 56);
    const std::uint64_t part = isHuge ? used >> 10 : used;
    const std::uint64_t whole = std::max<std::uint64_t>(part + (isHuge ? free >> 10 : free), 1);
    const auto percent = static_cast<unsigned>((part * 100 + whole - 1) / whole);
    return (percent == 100 && free > 0) ? 99 : percent;
}

std::optional<Capacity> readCapacity(const char* folder)
{
    struct statvfs status = {};
    if (::statvfs(folder, &status) != 0 || status.f_blocks == 0) {
        return std::nullopt;
    }
    const auto kibibytes = [unit = std::uint64_t{status.f_frsize}](std::uint64_t blocks) {
        return blocks / 1024 * unit + blocks % 1024 * unit / 1024;
    };
    return Capacity{.total = kibibytes(status.f_blocks),
                    .used = kibibytes(status.f_blocks - status.f_bfree),
                    .free = kibibytes(status.f_bavail)};
}

std::string formatCapacity(const Capacity& capacity)
{
    // Translators: 1 is a size without its unit if 2 has the same one, as in "312 of 500 GB".
    return text::fill(text::tr("{1} of {2} used, {3} free"),
                      {formatPartOfKibibytes(capacity.used, capacity.total),
                       formatKibibytes(capacity.total), formatKibibytes(capacity.free)});
}

} // namespace view
