// SPDX-License-Identifier: MIT
//
// request.h: what the web server hands to a CGI program: variables of its environment, and the body
// on standard input.
#pragma once

#include <cstdio>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "page/form.h"

namespace page {

/// The largest body that is read, in bytes.
inline constexpr std::size_t kMaxBodySize = 16384;

inline constexpr std::string_view kTokenCookie = "vokpage_token";
inline constexpr std::string_view kTokenField = "token";

/// The statuses of requests that are not served.
enum RefusalStatus {
    kBadRequest = 400,
    kForbidden = 403,
    kNotFound = 404,
    kMethodNotAllowed = 405,
    kTooLarge = 413,
    kWrongType = 415,
    kFailure = 500,
};

/// A request that is not served, with the status that says so and the reason in words.
class Refusal : public std::runtime_error {
  public:
    Refusal(int status, const std::string& reason) : std::runtime_error(reason), status_(status) {}

    [[nodiscard]] int status() const { return status_; }

  private:
    int status_;
};

struct Request {
    std::string method;
    std::string path;  ///< what stands behind the program's own name: "", "/setup" and so on
    std::string host;  ///< as the browser named it, without the port
    std::string token; ///< the browser's; empty where it showed none, or something else
    Form form;         ///< of a POST

    [[nodiscard]] bool isPost() const { return method == "POST"; }
};

/// Reads a request from the environment and a stream. Refuses methods other than GET, HEAD and
/// POST, and bodies that are too large, cut short or no form.
[[nodiscard]] Request readRequest(std::FILE* body);

/// Refuses a POST whose form does not carry the token that the browser keeps: it may come from a
/// page of somebody else.
void checkToken(const Request& request);

/// Refuses a request that names a host which is neither an address, nor "localhost", nor the
/// appliance itself (NAME or NAME.local), nor one of its further names: somebody may have made a
/// name of his own point here, so that his pages count as ours.
/// @param ownName  gives the appliance's name; asked only if no other name is the one
void checkHost(const Request& request, std::span<const std::string> furtherNames,
               std::string (*ownName)());

/// The value of a cookie in a "Cookie" header; empty where there is none.
[[nodiscard]] std::string_view cookieValue(std::string_view header, std::string_view name);

} // namespace page
