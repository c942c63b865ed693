// SPDX-License-Identifier: MIT
#include "page/origin.h"

#include "core/bytes.h"
#include "text/translation.h"

namespace page {
namespace {

/// Whether an origin is where the request was sent to. Behind a server for TLS that does not tell
/// of it, the browser's scheme is not known here.
bool isOwn(const Request& request)
{
    return core::equalIgnoringCase(request.origin, "https://" + request.authority) ||
           (!request.isSecure &&
            core::equalIgnoringCase(request.origin, "http://" + request.authority));
}

/// "none" is said of what the visitor did without any page, such as sending a form once more.
bool isNear(const Request& request)
{
    return request.fetchSite == "same-origin" || request.fetchSite == "none";
}

} // namespace

void checkOrigin(const Request& request)
{
    const bool isForeign = (!request.origin.empty() && !isOwn(request)) ||
                           (!request.fetchSite.empty() && !isNear(request));
    if (request.isPost() && isForeign) {
        throw Refusal(kForbidden,
                      text::tr("Your browser says that this form does not come from a page of "
                               "this appliance. Nothing was changed."));
    }
}

} // namespace page
