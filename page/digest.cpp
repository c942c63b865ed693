// SPDX-License-Identifier: MIT
#include "page/digest.h"

#include <array>
#include <openssl/evp.h>
#include <stdexcept>

#include "core/bytes.h"

namespace page {

std::string digestOf(std::string_view text)
{
    std::array<unsigned char, 32> digest{};
    if (::EVP_Digest(text.data(), text.size(), digest.data(), nullptr, ::EVP_sha256(), nullptr) !=
        1) {
        throw std::runtime_error("there is no SHA-256");
    }
    std::string digits;
    core::appendHex(digits, digest);
    return digits;
}

} // namespace page
