// SPDX-License-Identifier: MIT
//
// catalogue.h: compiled catalogues of translations, for tests.
#pragma once

#include <string>
#include <vector>

namespace catalogue {

struct Entry {
    std::string original;
    std::string translation;
};
using Entries = std::vector<Entry>;

inline std::string u32(std::size_t number)
{
    std::string bytes;
    for (unsigned shift = 0; shift < 32; shift += 8) {
        bytes += static_cast<char>(number >> shift & 0xFFU);
    }
    return bytes;
}

/// A catalogue as msgfmt writes it; the entries must be sorted.
inline std::string compiled(const Entries& entries)
{
    constexpr std::size_t kHeaderSize = 28;
    const std::size_t tableSize = entries.size() * 8;
    std::string tables;
    std::string texts;
    const std::size_t textsAt = kHeaderSize + 2 * tableSize;
    for (const bool isOriginal : {true, false}) {
        for (const Entry& entry : entries) {
            const std::string& each = isOriginal ? entry.original : entry.translation;
            tables += u32(each.size()) + u32(textsAt + texts.size());
            texts += each + '\0';
        }
    }
    return u32(0x950412DE) + u32(0) + u32(entries.size()) + u32(kHeaderSize) +
           u32(kHeaderSize + tableSize) + u32(0) + u32(textsAt) + tables + texts;
}

} // namespace catalogue
