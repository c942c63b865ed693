// SPDX-License-Identifier: MIT
#include "page/response.h"

#include <algorithm>
#include <array>

#include "page/request.h"
#include "text/translation.h"

namespace page {
namespace {

struct Status {
    int code;
    std::string_view words;
};

constexpr auto kStatuses = std::to_array<Status>({
    {200, "200 OK"},
    {kSeeOther, "303 See Other"},
    {kBadRequest, "400 Bad Request"},
    {kForbidden, "403 Forbidden"},
    {kNotFound, "404 Not Found"},
    {kMethodNotAllowed, "405 Method Not Allowed"},
    {kTooLate, "408 Request Timeout"},
    {kTooLarge, "413 Content Too Large"},
    {kWrongType, "415 Unsupported Media Type"},
    {kTooMany, "429 Too Many Requests"},
    {kBusy, "503 Service Unavailable"},
    {kTookTooLong, "504 Gateway Timeout"},
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

/// Script comes from the page itself, marked with the nonce, and from files of this server. It may
/// ask this server for more.
std::string securityPolicy(std::string_view nonce)
{
    std::string policy = "default-src 'none'; script-src 'self' 'nonce-";
    policy.append(nonce);
    policy.append("'; style-src 'self'; img-src 'self'; connect-src 'self'; form-action 'self'; "
                  "base-uri 'none'; "
                  "frame-ancestors 'none'");
    return policy;
}

/// No script of any page reads it, and no page of another site sends it along.
std::string cookieText(const Cookie& cookie, bool isSecure)
{
    std::string text(cookie.name);
    text.append("=").append(cookie.value).append("; Path=/; HttpOnly; SameSite=Strict");
    text.append(isSecure ? "; Secure" : "");
    if (cookie.value.empty() || cookie.kept.count() > 0) {
        text.append("; Max-Age=").append(std::to_string(cookie.kept.count()));
    }
    return text;
}

/// What keeps an answer to itself: every answer has these.
void addSecurityHeaders(std::string& out, std::string_view nonce)
{
    addHeader(out, "Content-Security-Policy", securityPolicy(nonce));
    addHeader(out, "X-Content-Type-Options", "nosniff");
    addHeader(out, "X-Frame-Options", "DENY");
    addHeader(out, "Referrer-Policy", "same-origin");
    addHeader(out, "Cross-Origin-Resource-Policy", "same-origin");
    addHeader(out, "Cache-Control", "no-store");
}

/// What some statuses say besides.
void addStatusHeaders(std::string& out, const Response& response)
{
    if (!response.location.empty()) {
        addHeader(out, "Location", response.location);
    }
    if (!response.allowed.empty()) {
        addHeader(out, "Allow", response.allowed);
    }
    if (response.retryAfter.count() > 0) {
        addHeader(out, "Retry-After", std::to_string(response.retryAfter.count()));
    }
}

} // namespace

std::string render(const Response& response, bool isHeadOnly)
{
    std::string out;
    addHeader(out, "Status", wordsOf(response.status));
    addHeader(out, "Content-Type", "text/html; charset=utf-8");
    addHeader(out, "Content-Language", text::spoken().tag);
    addHeader(out, "Vary", "Accept-Language, Cookie");
    addSecurityHeaders(out, response.nonce);
    addStatusHeaders(out, response);
    for (const Cookie& cookie : response.cookies) {
        addHeader(out, "Set-Cookie", cookieText(cookie, response.isSecure));
    }
    out += "\r\n";
    if (!isHeadOnly) {
        out += response.page.text();
    }
    return out;
}

} // namespace page
