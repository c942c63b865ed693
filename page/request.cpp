// SPDX-License-Identifier: MIT
#include "page/request.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <optional>
#include <poll.h>
#include <span>
#include <system_error>
#include <unistd.h>

#include "core/bytes.h"
#include "page/token.h"
#include "text/translation.h"

namespace page {
namespace {

using text::tr;

/// How long a browser may take to send its form.
constexpr std::chrono::seconds kBodyPatience{10};

// ---- Body -------------------------------------------------------------------------------------

std::size_t sizeOf(std::string_view text)
{
    const char* end = text.data() + text.size();
    std::size_t size = 0;
    const auto read = std::from_chars(text.data(), end, size);
    if (read.ec == std::errc::result_out_of_range || size > kMaxBodySize) {
        throw Refusal(kTooLarge, tr("The form is too large."));
    }
    if (read.ec != std::errc() || read.ptr != end) {
        throw Refusal(kBadRequest, tr("The size of the form is missing."));
    }
    return size;
}

/// Reads what is there by now.
/// @return the number of bytes; 0 at the end
std::size_t readSome(int body, std::span<char> rest)
{
    const ssize_t size = ::read(body, rest.data(), rest.size());
    if (size < 0 && errno != EINTR && errno != EAGAIN) {
        throw std::system_error(errno, std::generic_category(), "cannot read the form");
    }
    if (size == 0) {
        throw Refusal(kBadRequest, tr("The form is not complete."));
    }
    return (size > 0) ? static_cast<std::size_t>(size) : 0;
}

std::string readBody(int body, std::size_t size)
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point deadline = Clock::now() + kBodyPatience;
    std::string text(size, '\0');
    std::span<char> rest(text);
    while (!rest.empty()) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        pollfd waiting = {body, POLLIN, 0};
        if (left.count() <= 0 || ::poll(&waiting, 1, static_cast<int>(left.count())) == 0) {
            throw Refusal(kTooLate, tr("The form did not come in time."));
        }
        rest = rest.subspan(readSome(body, rest));
    }
    return text;
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

/// The value of a cookie that holds a token; empty if there is none, or something else in it.
std::string_view tokenIn(std::string_view cookies, std::string_view name)
{
    const std::string_view value = cookieValue(cookies, name);
    return isToken(value) ? value : std::string_view();
}

/// What servers say in "HTTPS".
bool isOn(std::string_view value)
{
    return !value.empty() && value != "off";
}

} // namespace

std::string_view cookieValue(std::string_view header, std::string_view name)
{
    std::optional<std::string_view> value;
    while (!header.empty()) {
        const std::size_t end = std::min(header.find(';'), header.size());
        const std::string_view cookie = trim(header.substr(0, end));
        if (cookie.starts_with(name) && cookie.substr(name.size()).starts_with('=')) {
            if (value) {
                throw Refusal(kBadRequest,
                              tr("Your browser has two cookies of one name, and one of them is "
                                 "not ours. Delete the cookies of this appliance, and log in "
                                 "again."));
            }
            value = cookie.substr(name.size() + 1);
        }
        header.remove_prefix(std::min(end + 1, header.size()));
    }
    return value.value_or("");
}

std::string Request::host() const
{
    return std::string(hostName(authority));
}

Request readHead(const Variables& variables)
{
    Request request;
    request.method = variables["REQUEST_METHOD"];
    request.path = variables["PATH_INFO"];
    request.rawQuery = variables["QUERY_STRING"];
    request.query = Form(request.rawQuery);
    request.authority = variables["HTTP_HOST"];
    request.origin = variables["HTTP_ORIGIN"];
    request.fetchSite = variables["HTTP_SEC_FETCH_SITE"];
    request.remoteUser = variables["REMOTE_USER"];
    request.address = variables["REMOTE_ADDR"];
    request.isSecure = isOn(variables["HTTPS"]) || variables["REQUEST_SCHEME"] == "https";
    request.session = tokenIn(variables["HTTP_COOKIE"], kSessionCookie);
    request.token = tokenIn(variables["HTTP_COOKIE"], kTokenCookie);
    request.deed = cookieValue(variables["HTTP_COOKIE"], kDeedCookie);
    if (!request.isPost() && request.method != "GET" && request.method != "HEAD") {
        throw Refusal(kMethodNotAllowed, tr("The pages take only GET, HEAD and POST."));
    }
    return request;
}

Form readForm(const Variables& variables, int body)
{
    constexpr std::string_view kFormType = "application/x-www-form-urlencoded";
    const std::string_view type = variables["CONTENT_TYPE"];
    if (type.substr(0, type.find(';')) != kFormType) {
        throw Refusal(kWrongType, tr("This is not a form."));
    }
    return Form(readBody(body, sizeOf(variables["CONTENT_LENGTH"])));
}

void checkHost(const Request& request, std::span<const std::string> furtherNames,
               std::string (*ownName)())
{
    const std::string host = request.host();
    const auto isMeant = [&host](const std::string& name) {
        return core::equalIgnoringCase(host, name);
    };
    if (isAddress(host) || isMeant("localhost") ||
        std::any_of(furtherNames.begin(), furtherNames.end(), isMeant)) {
        return;
    }
    const std::string own = ownName();
    if (own.empty() || (!isMeant(own) && !isMeant(own + ".local"))) {
        throw Refusal(kForbidden, tr("The appliance does not go by this name. Use its own name "
                                     "or its address."));
    }
}

} // namespace page
