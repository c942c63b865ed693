// SPDX-License-Identifier: MIT
#include "page/request.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <charconv>
#include <cstdlib>

#include "core/bytes.h"
#include "page/token.h"

namespace page {
namespace {

std::string_view variable(const char* name)
{
    const char* value = std::getenv(name);
    return (value != nullptr) ? value : "";
}

// ---- Body -------------------------------------------------------------------------------------

std::size_t bodySize()
{
    const std::string_view text = variable("CONTENT_LENGTH");
    const char* end = text.data() + text.size();
    std::size_t size = 0;
    const auto read = std::from_chars(text.data(), end, size);
    if (read.ec == std::errc::result_out_of_range || size > kMaxBodySize) {
        throw Refusal(kTooLarge, "The form is too large.");
    }
    if (read.ec != std::errc() || read.ptr != end) {
        throw Refusal(kBadRequest, "The size of the form is missing.");
    }
    return size;
}

Form readForm(std::FILE* body)
{
    constexpr std::string_view kFormType = "application/x-www-form-urlencoded";
    const std::string_view type = variable("CONTENT_TYPE");
    if (type.substr(0, type.find(';')) != kFormType) {
        throw Refusal(kWrongType, "This is not a form.");
    }
    std::string text(bodySize(), '\0');
    if (std::fread(text.data(), 1, text.size(), body) != text.size()) {
        throw Refusal(kBadRequest, "The form is not complete.");
    }
    return Form(text);
}

// ---- Headers ----------------------------------------------------------------------------------

/// "name:80" and "[::1]:80" without the port.
std::string_view hostName(std::string_view header)
{
    if (header.starts_with('[')) {
        return header.substr(0, std::min(header.find(']'), header.size() - 1) + 1);
    }
    return header.substr(0, header.find(':'));
}

bool isAddress(const std::string& host)
{
    std::array<unsigned char, sizeof(in6_addr)> address{};
    if (host.starts_with('[') && host.ends_with(']')) {
        const std::string inner = host.substr(1, host.size() - 2);
        return ::inet_pton(AF_INET6, inner.c_str(), address.data()) == 1;
    }
    return ::inet_pton(AF_INET, host.c_str(), address.data()) == 1;
}

} // namespace

std::string_view cookieValue(std::string_view header, std::string_view name)
{
    while (!header.empty()) {
        const std::size_t end = std::min(header.find(';'), header.size());
        const std::string_view cookie = trim(header.substr(0, end));
        if (cookie.starts_with(name) && cookie.substr(name.size()).starts_with('=')) {
            return cookie.substr(name.size() + 1);
        }
        header.remove_prefix(std::min(end + 1, header.size()));
    }
    return {};
}

Request readRequest(std::FILE* body)
{
    Request request;
    request.method = variable("REQUEST_METHOD");
    request.path = variable("PATH_INFO");
    request.host = hostName(variable("HTTP_HOST"));
    const std::string_view token = cookieValue(variable("HTTP_COOKIE"), kTokenCookie);
    request.token = isToken(token) ? token : "";
    if (request.isPost()) {
        request.form = readForm(body);
    } else if (request.method != "GET" && request.method != "HEAD") {
        throw Refusal(kMethodNotAllowed, "Pages are read or sent a form; nothing else.");
    }
    return request;
}

void checkToken(const Request& request)
{
    if (request.isPost() && !isSameToken(request.form.value(kTokenField), request.token)) {
        throw Refusal(kForbidden,
                      "This form does not come from a page of this appliance, or its page "
                      "is too old. Nothing was changed. Open the page again and repeat "
                      "what you did; your browser must accept its cookie.");
    }
}

void checkHost(const Request& request, std::span<const std::string> furtherNames,
               std::string (*ownName)())
{
    const auto isMeant = [&](const std::string& name) {
        return core::equalIgnoringCase(request.host, name);
    };
    if (isAddress(request.host) || isMeant("localhost") ||
        std::any_of(furtherNames.begin(), furtherNames.end(), isMeant)) {
        return;
    }
    const std::string own = ownName();
    if (own.empty() || (!isMeant(own) && !isMeant(own + ".local"))) {
        throw Refusal(kForbidden, "The appliance does not go by this name. Use its own name or its "
                                  "address.");
    }
}

} // namespace page
