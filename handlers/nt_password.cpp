// SPDX-License-Identifier: MIT
#include "handlers/nt_password.h"

// MD4 is deprecated, but SMB servers keep it. This function needs no configured provider.
#define OPENSSL_SUPPRESS_DEPRECATED
#include <openssl/md4.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iconv.h>
#include <optional>
#include <string_view>

#include "core/bytes.h"
#include "core/core.h"

namespace handlers {
namespace {

using Digest = std::array<unsigned char, MD4_DIGEST_LENGTH>;

/// The value of a hexadecimal digit, or -1.
int digitOf(char c)
{
    const char upper = core::toAsciiUpper(c);
    if (upper >= '0' && upper <= '9') {
        return upper - '0';
    }
    return (upper >= 'A' && upper <= 'F') ? upper - 'A' + 10 : -1;
}

/// Two characters a byte, the high half first.
std::optional<Digest> decodeHash(const SmbPasswdEntry& entry)
{
    Digest digest;
    if (entry.ntHash[2 * digest.size()] != '\0') {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < digest.size(); ++i) {
        const int high = digitOf(entry.ntHash[2 * i]);
        const int low = digitOf(entry.ntHash[2 * i + 1]);
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        digest[i] = static_cast<unsigned char>(high * 16 + low);
    }
    return digest;
}

/// A conversion from ISO-8859-1 to UTF-16LE.
class Converter {
  public:
    Converter() : converter_(::iconv_open("UTF-16LE", "ISO-8859-1")) {}
    ~Converter()
    {
        if (isOpen()) {
            ::iconv_close(converter_);
        }
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    [[nodiscard]] bool isOpen() const
    {
        // NOLINTNEXTLINE(performance-no-int-to-ptr): the library's value for "no converter"
        return converter_ != reinterpret_cast<iconv_t>(std::intptr_t{-1});
    }

    [[nodiscard]] bool convert(std::string_view text, char* out, std::size_t room)
    {
        // iconv's parameter is not const, but iconv does not write to its input.
        char* in = const_cast<char*>(text.data());
        std::size_t left = text.size();
        return ::iconv(converter_, &in, &left, &out, &room) != static_cast<std::size_t>(-1);
    }

  private:
    iconv_t converter_;
};

std::optional<Digest> hashPassword(std::string_view password)
{
    Converter converter;
    if (!converter.isOpen()) {
        return std::nullopt;
    }
    const std::size_t size = 2 * password.size();
    const core::Text wide(static_cast<char*>(std::calloc(1, size + 1)));
    if (!wide || !converter.convert(password, wide.get(), size + 1)) {
        return std::nullopt;
    }
    Digest digest;
    ::MD4(reinterpret_cast<const unsigned char*>(wide.get()), size, digest.data());
    return digest;
}

} // namespace
} // namespace handlers

int checkNtPassword(const SmbPasswdEntry* entry, const char* user, const char* password)
{
    const std::optional<handlers::Digest> expected = handlers::decodeHash(*entry);
    if (!expected || !core::equalIgnoringCase(entry->name, user)) {
        return -1;
    }
    return (handlers::hashPassword(password) == expected) ? 0 : -1;
}
