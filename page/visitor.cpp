// SPDX-License-Identifier: MIT
#include "page/visitor.h"

#include <optional>

#include "page/administrators.h"
#include "page/sessions.h"
#include "page/token.h"
#include "vokcontrol.h"

namespace page {
namespace {

bool isSetupPending(Script& script)
{
    return script.run([] { return ::getvar("firsttime")[0] != '0'; });
}

} // namespace

Visitor identify(const Request& request, const config::Configuration& settings, Script& script)
{
    const Administrators administrators(settings);
    Visitor visitor;
    if (const std::optional<Session> session = Sessions().find(request.session, now())) {
        visitor.account = session->account;
        visitor.formToken = session->formToken;
        visitor.isAdministrator = administrators.contains(session->account);
    } else {
        visitor.formToken = request.token;
        visitor.mayBegin = administrators.areNone() && isSetupPending(script);
    }
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
                      "This form does not come from a page of this appliance, or its page "
                      "is too old. Nothing was changed. Open the page again and repeat "
                      "what you did; your browser must accept its cookie.");
    }
}

} // namespace page
