// SPDX-License-Identifier: MIT
#include "page/visitor.h"

#include <optional>

#include "page/administrators.h"
#include "page/sessions.h"
#include "page/token.h"
#include "text/translation.h"
#include "vokcontrol.h"

namespace page {
namespace {

using text::tr;

bool isSetupPending(Script& script)
{
    return script.run([] { return ::getvar("firsttime")[0] != '0'; });
}

const std::string& namedByServer(const Request& request)
{
    if (request.remoteUser.empty()) {
        throw Refusal(kForbidden,
                      tr("The web server has not said who you are. This appliance is set to rely "
                         "on the web server's login, which has to be switched on."));
    }
    return request.remoteUser;
}

} // namespace

Visitor identify(const Request& request, const config::Configuration& settings, Script& script)
{
    const Administrators administrators(settings);
    Visitor visitor;
    visitor.formToken = request.token;
    if (settings.trustWebServer) {
        visitor.account = namedByServer(request);
    } else if (const std::optional<Session> session = Sessions().find(request.session, now())) {
        visitor.account = session->account;
        visitor.formToken = session->formToken;
        visitor.hasSession = true;
    } else {
        visitor.mayBegin = administrators.areNone() && isSetupPending(script);
    }
    visitor.isAdministrator = administrators.contains(visitor.account);
    return visitor;
}

bool admits(Level level, const Visitor& visitor)
{
    switch (level) {
    case Level::kAnybody:
        return true;
    case Level::kNewcomer:
        return visitor.mayBegin;
    case Level::kAccount:
        return !visitor.account.empty();
    case Level::kAdministrator:
        break;
    }
    return visitor.isAdministrator;
}

void checkToken(const Request& request, const Visitor& visitor)
{
    if (request.isPost() && !isSameToken(request.form.value(kTokenField), visitor.formToken)) {
        throw Refusal(kForbidden,
                      tr("This form does not come from a page of this appliance, or its page is "
                         "too old. Nothing was changed. Open the page again and repeat what you "
                         "did; your browser must accept its cookie."));
    }
}

} // namespace page
