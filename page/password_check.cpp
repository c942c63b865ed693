// SPDX-License-Identifier: MIT
//
// Whether a user can log in with a password. It is as slow to guess as at the login itself.
#include <optional>
#include <string>

#include "client/failure.h"
#include "page/account_fields.h"
#include "page/accounts.h"
#include "page/complaints.h"
#include "page/deed.h"
#include "page/layout.h"
#include "page/log.h"
#include "page/login_pauses.h"
#include "page/pages.h"
#include "page/service.h"
#include "text/translation.h"

namespace page {
namespace {

using text::tr;
using text::trc;

Page form(const Visit& visit, const Complaints& complaints)
{
    Page page;
    page.title = tr("Check a password");
    page.body << complaints.summary() << R"(<section class="card narrow">
<p class="quiet">)"
              << Text{tr("Says whether a user can log in with a password. Nothing is changed.")}
              << R"(</p>
)" << openForm(visit.token, "/users/check")
              << nameField(visit.request.form.value("name"), complaints.about("name"))
              << passwordField("password", tr("Password"), "off", complaints.about("password"))
              << R"(<p class="buttons"><button class="main">)" << Text{trc("button", "Check")}
              << R"(</button></p>
</form>
<p><a href=")" << kProgramUrl
              << R"(/users">)" << Text{tr("Back to the users")} << R"(</a></p>
</section>
)";
    return page;
}

/// Asks the service, if the account's pause after wrong passwords is over.
/// @return what is wrong; empty if the password is right
std::string complaintOf(const Visit& visit, const Credentials& credentials)
{
    LoginPauses pauses;
    const Time wait = pauses.attempt(credentials.name, now());
    if (wait > Time(0)) {
        return askToWait(wait);
    }
    log(quoted(visit.visitor.account) + " checks the password of " + quoted(credentials.name));
    if (!checkPassword(visit.settings, credentials)) {
        return tr("With this name and this password nobody can log in.");
    }
    pauses.succeeded(credentials.name, now());
    return "";
}

/// Checks what was typed, unless something is missing.
Complaints check(const Visit& visit, const Credentials& credentials)
{
    Complaints complaints;
    complaints.add("name", credentials.name.empty() ? tr("Give the name of the user.") : "");
    complaints.add("password", credentials.password.empty() ? tr("Give the password.") : "");
    if (!complaints.areNone()) {
        return complaints;
    }
    try {
        complaints.add("password", complaintOf(visit, credentials));
    } catch (const client::Failure& failure) {
        complaints.add(failure, {});
    }
    return complaints;
}

} // namespace

Page makePasswordCheck(Visit& visit)
{
    if (!visit.request.isPost()) {
        return form(visit, {});
    }
    const Credentials credentials = readCredentials(visit.request.form);
    const Complaints complaints = check(visit, credentials);
    return complaints.areNone() ? leadTo("/users", {"checked", {credentials.name}})
                                : form(visit, complaints);
}

} // namespace page
