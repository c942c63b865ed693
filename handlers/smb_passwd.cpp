// SPDX-License-Identifier: MIT
#include "handlers/smb_passwd.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <limits>
#include <new>
#include <optional>
#include <span>
#include <string_view>

#include "core/core.h"

struct SmbPasswdHandle {
    core::File file;
    std::array<char, 1024> line;
};

namespace handlers {
namespace {

/// The fields of a line, in order; what follows the sixth colon is none.
using Fields = std::array<std::string_view, 6>;

/// Splits a line at its colons. One at the very end of a line without a newline does not count.
/// @param size  the line's length as it was read, its newline counted
std::optional<Fields> splitLine(std::string_view text, std::size_t size)
{
    Fields fields;
    const std::string_view scanned = text.substr(0, (size > 0) ? size - 1 : 0);
    std::size_t start = 0;
    for (std::string_view& field : fields) {
        const std::size_t colon = scanned.find(':', start);
        if (colon == std::string_view::npos) {
            return std::nullopt;
        }
        field = text.substr(start, colon - start);
        start = colon + 1;
    }
    return fields;
}

/// Copies as much of a field as fits, zeros behind it.
void copyField(std::span<char> out, std::string_view field)
{
    const std::size_t size = std::min(out.size(), field.size());
    std::ranges::fill(
        std::ranges::copy_n(field.begin(), static_cast<std::ptrdiff_t>(size), out.begin()).out,
        out.end(), '\0');
}

/// The whole of a field as a number, drawn into its range; nothing where the field is none.
template <class Number> std::optional<Number> readNumber(std::string_view field, int base)
{
    Number number = 0;
    const char* end = field.data() + field.size();
    const auto [stop, error] = std::from_chars(field.data(), end, number, base);
    if (stop != end || error == std::errc::invalid_argument) {
        return std::nullopt;
    }
    if (error == std::errc::result_out_of_range) {
        using Limits = std::numeric_limits<Number>;
        return field.starts_with('-') ? Limits::min() : Limits::max();
    }
    return number;
}

bool readId(std::string_view field, std::int32_t& id)
{
    if (field.starts_with('+') && !field.starts_with("+-")) {
        field.remove_prefix(1);
    }
    const auto number = readNumber<std::int32_t>(field, 10);
    id = number.value_or(0);
    return number.has_value();
}

bool readFlags(std::string_view field, std::uint8_t& flags)
{
    flags = 0;
    for (const char c : field) {
        switch (c) {
        case ' ':
        case '[':
        case ']':
            break;
        case 'U':
            flags |= kSmbUser;
            break;
        case 'N':
            flags |= kSmbNoPassword;
            break;
        case 'D':
            flags |= kSmbDisabled;
            break;
        case 'X':
            flags |= kSmbNeverExpires;
            break;
        case 'W':
            flags |= kSmbWorkstation;
            break;
        default:
            return false;
        }
    }
    return true;
}

bool readLastChange(std::string_view field, std::uint32_t& lastChange)
{
    constexpr std::string_view kLabel = "LCT-";
    lastChange = 0;
    if (!field.starts_with(kLabel)) {
        return false;
    }
    field.remove_prefix(kLabel.size());
    if (field.empty()) {
        return true;
    }
    const auto number = readNumber<std::uint32_t>(field, 16);
    lastChange = number.value_or(0);
    return number.has_value();
}

bool readAccount(const Fields& fields, SmbPasswdEntry& entry)
{
    const auto& [name, id, lmHash, ntHash, flags, lastChange] = fields;
    entry = {};
    copyField(std::span(entry.name).first<sizeof entry.name - 1>(), name);
    copyField(entry.lmHash, lmHash);
    copyField(entry.ntHash, ntHash);
    return readId(id, entry.uid) && readFlags(flags, entry.flags) &&
           readLastChange(lastChange, entry.lastChange);
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

    const std::string_view line = handle->line.data();
    const std::string_view text = line.ends_with('\n') ? line.substr(0, line.size() - 1) : line;
    const auto fields = handlers::splitLine(text, line.size());
    if (!fields || !handlers::readAccount(*fields, *entry)) {
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
