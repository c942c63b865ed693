// SPDX-License-Identifier: MIT
#include "page/token.h"

#include <array>
#include <cerrno>
#include <sys/random.h>
#include <system_error>

#include "core/bytes.h"

namespace page {
namespace {

using Bytes = std::array<unsigned char, 16>;

} // namespace

std::string makeToken()
{
    Bytes bytes{};
    if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        throw std::system_error(errno, std::generic_category(), "no random numbers");
    }
    std::string token;
    core::appendHex(token, bytes);
    return token;
}

bool isToken(std::string_view text)
{
    return text.size() == 2 * sizeof(Bytes) &&
           text.find_first_not_of(core::kHexDigits) == text.npos;
}

bool isSameToken(std::string_view one, std::string_view other)
{
    if (!isToken(one) || !isToken(other)) {
        return false;
    }
    unsigned difference = 0;
    for (std::size_t at = 0; at < one.size(); ++at) {
        difference |= static_cast<unsigned char>(one[at]) ^ static_cast<unsigned char>(other[at]);
    }
    return difference == 0;
}

} // namespace page
