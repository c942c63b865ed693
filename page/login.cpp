// SPDX-License-Identifier: MIT
//
// Logging in and out.
#include "client/failure.h"
#include "page/account_fields.h"
#include "page/accounts.h"
#include "page/layout.h"
#include "page/log.h"
#include "page/login_pauses.h"
#include "page/pages.h"
#include "page/sessions.h"
#include "text/translation.h"

namespace page {
namespace {

using text::tr;

constexpr std::string_view kOverview;

Page form(const Visit& visit, const Html& words)
{
    Page page;
    page.title = tr("Log in");
    page.body << R"(<section class="card narrow">)" << words << openForm(visit.token, "/login")
              << nameField(visit.request.form.value("name"), "")
              << passwordField("password", tr("Password"), "current-password", "")
              << R"(<p class="buttons"><button class="main">)" << Text{tr("Log in")}
              << R"(</button></p>
</form>
<p class="quiet">)"
              << Text{tr("Log in with an account of this appliance.")} << R"(</p>
</section>
)";
    return page;
}

Page refused(const Visit& visit, int status, std::string_view words)
{
    Page page = form(visit, notice(Mood::kBad, Html() << "<p>" << Text{words} << "</p>"));
    page.status = status;
    return page;
}

Page paused(const Visit& visit, Time wait)
{
    Page page = refused(visit, kTooMany, askToWait(wait));
    page.retryAfter = wait;
    return page;
}

void logAttempt(const Visit& visit, std::string_view words)
{
    log(std::string(words) + " " + quoted(visit.request.form.value("name")) + " from " +
        quoted(visit.request.address));
}

Page logIn(const Visit& visit, const Credentials& credentials)
{
    LoginPauses pauses;
    const Time wait = pauses.attempt(credentials.name, now());
    if (wait > Time(0)) {
        logAttempt(visit, "a login had to wait:");
        return paused(visit, wait);
    }
    const std::optional<std::string> account = checkPassword(visit.settings, credentials);
    if (!account) {
        logAttempt(visit, "wrong name or password:");
        return refused(visit, kForbidden, tr("The name or the password is wrong."));
    }
    pauses.succeeded(credentials.name, now());
    logAttempt(visit, "logged in:");
    Page page;
    page.next = kOverview;
    page.cookies = beginSession(*account);
    return page;
}

} // namespace

Page makeLogin(Visit& visit)
{
    if (!visit.visitor.account.empty() || visit.visitor.mayBegin) {
        Page page;
        page.next = visit.visitor.mayBegin ? "/setup/administrator" : kOverview;
        return page;
    }
    if (!visit.request.isPost()) {
        return form(visit, {});
    }
    try {
        return logIn(visit, readCredentials(visit.request.form));
    } catch (const client::Failure& failure) {
        log(std::string("no password can be checked: ") + failure.what());
        return refused(visit, kBusy, tr("The appliance cannot check passwords now. Try again."));
    }
}

Page makeLogout(Visit& visit)
{
    Sessions().end(visit.request.session);
    log("logged out: " + quoted(visit.visitor.account) + " from " + quoted(visit.request.address));
    Page page;
    page.next = "/login";
    page.cookies = {{kSessionCookie, ""}};
    return page;
}

} // namespace page
