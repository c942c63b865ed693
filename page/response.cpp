// SPDX-License-Identifier: MIT
#include "page/response.h"

#include <algorithm>
#include <array>

#include "page/request.h"

namespace page {
namespace {

struct Status {
    int code;
    std::string_view words;
};

constexpr auto kStatuses = std::to_array<Status>({
    {200, "200 OK"},
    {kBadRequest, "400 Bad Request"},
    {kForbidden, "403 Forbidden"},
    {kNotFound, "404 Not Found"},
    {kMethodNotAllowed, "405 Method Not Allowed"},
    {kTooLarge, "413 Content Too Large"},
    {kWrongType, "415 Unsupported Media Type"},
    {kFailure, "500 Internal Server Error"},
});

std::string_view wordsOf(int code)
{
    const auto* found = std::ranges::find(kStatuses, code, &Status::code);
    return (found != kStatuses.end()) ? found->words : kStatuses.back().words;
}

void addHeader(std::string& out, std::string_view name, std::string_view value)
{
    out.append(name).append(": ").append(value).append("\r\n");
}

/// Script comes from the page itself, marked with the nonce, and from files of this server.
std::string securityPolicy(std::string_view nonce)
{
    std::string policy = "default-src 'none'; script-src 'self' 'nonce-";
    policy.append(nonce);
    policy.append("'; style-src 'self'; img-src 'self'; form-action 'self'; base-uri 'none'; "
                  "frame-ancestors 'none'");
    return policy;
}

std::string tokenCookie(std::string_view token)
{
    std::string cookie(kTokenCookie);
    return cookie.append("=").append(token).append("; Path=/; HttpOnly; SameSite=Strict");
}

} // namespace

std::string render(const Response& response, bool isHeadOnly)
{
    std::string out;
    addHeader(out, "Status", wordsOf(response.status));
    addHeader(out, "Content-Type", "text/html; charset=utf-8");
    addHeader(out, "Content-Security-Policy", securityPolicy(response.nonce));
    addHeader(out, "X-Content-Type-Options", "nosniff");
    addHeader(out, "X-Frame-Options", "DENY");
    addHeader(out, "Referrer-Policy", "same-origin");
    addHeader(out, "Cache-Control", "no-store");
    if (response.status == kMethodNotAllowed) {
        addHeader(out, "Allow", "GET, HEAD");
    }
    if (!response.newToken.empty()) {
        addHeader(out, "Set-Cookie", tokenCookie(response.newToken));
    }
    out += "\r\n";
    if (!isHeadOnly) {
        out += response.page.text();
    }
    return out;
}

} // namespace page
