// SPDX-License-Identifier: MIT
#include "service/usage.h"

#include <algorithm>
#include <fstream>

namespace service {
namespace {

constexpr std::size_t kCodeSize = 4;

/// The request's first four bytes, as the counter takes them; what is missing counts as zero.
std::uint32_t codeOf(std::string_view request)
{
    std::uint32_t code = 0;
    for (std::size_t i = 0; i < std::min(kCodeSize, request.size()); ++i) {
        code |= static_cast<std::uint32_t>(static_cast<unsigned char>(request[i])) << (8U * i);
    }
    return code;
}

} // namespace

Usage::Usage()
{
    init_cmd_buffer(&table_);
}

void Usage::count(std::string_view request)
{
    save_cmd_cnt(&table_, &lastSave_, codeOf(request));
}

void Usage::save() const
{
    std::ofstream file(VOK_USAGE_FILE, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(table_.bytes), sizeof table_.bytes);
}

} // namespace service
