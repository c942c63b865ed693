// SPDX-License-Identifier: MIT
//
// request.h: what the web server hands to a CGI program: variables of its environment, and the body
// on standard input.
#pragma once

#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "page/form.h"
#include "page/variables.h"

namespace page {

/// The largest body that is read, in bytes.
inline constexpr std::size_t kMaxBodySize = 16384;

inline constexpr std::string_view kTokenCookie = "vokpage_token";
inline constexpr std::string_view kSessionCookie = "vokpage_session";
/// What the form before has done, for the page that follows it.
inline constexpr std::string_view kDeedCookie = "vokpage_deed";
inline constexpr std::string_view kTokenField = "token";

/// The statuses of requests that are not served.
enum RefusalStatus {
    kBadRequest = 400,
    kForbidden = 403,
    kNotFound = 404,
    kMethodNotAllowed = 405,
    kTooLate = 408,
    kTooLarge = 413,
    kWrongType = 415,
    kTooMany = 429,
    kFailure = 500,
    kBusy = 503,
    kTookTooLong = 504,
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
    std::string path;       ///< what stands behind the program's own name: "", "/setup" and so on
    std::string rawQuery;   ///< what follows the "?" of the address
    Form query;             ///< its fields
    std::string authority;  ///< host and port, as the browser named them
    std::string origin;     ///< of the page that sent a form; empty if the browser does not say
    std::string fetchSite;  ///< how far that page is from here; empty if the browser does not say
    std::string remoteUser; ///< whom the web server says that it has asked for a login
    std::string address;    ///< whence the request came, for the log
    std::string session;    ///< the token of a session that the browser shows; empty if it has none
    std::string token;      ///< the browser's while it has no session; empty if it has none
    std::string deed;       ///< what the form before has done (deed.h); empty if there is nothing
    bool isSecure = false;  ///< whether it came over TLS
    Form form;              ///< of a POST

    [[nodiscard]] bool isPost() const { return method == "POST"; }

    /// As the browser named it, without the port.
    [[nodiscard]] std::string host() const;
};

/// Reads what the variables say. Refuses methods other than GET, HEAD and POST, and two cookies of
/// one name.
[[nodiscard]] Request readHead(const Variables& variables);

/// Reads the form of a POST. Refuses bodies that are too large, cut short, late or no form.
/// @param body  a descriptor
[[nodiscard]] Form readForm(const Variables& variables, int body);

/// Refuses a request that names a host which is neither an address, nor "localhost", nor the
/// appliance itself (NAME or NAME.local), nor one of its further names: somebody may have made a
/// name of his own point here, so that his pages count as ours.
/// @param ownName  gives the appliance's name; asked only if no other name is the one
void checkHost(const Request& request, std::span<const std::string> furtherNames,
               std::string (*ownName)());

/// The value of a cookie in a "Cookie" header; empty where there is none. Refuses a request with
/// two of that name: one of them was put there by somebody else.
[[nodiscard]] std::string_view cookieValue(std::string_view header, std::string_view name);

} // namespace page
