// SPDX-License-Identifier: MIT
//
// The first step of the first setup, which makes the administrator. All other steps need a login.
#include "client/failure.h"
#include "page/account_fields.h"
#include "page/accounts.h"
#include "page/administrators.h"
#include "page/layout.h"
#include "page/log.h"
#include "page/new_account.h"
#include "page/pages.h"
#include "text/translation.h"

namespace page {
namespace {

using text::tr;

Page form(const Visit& visit, const Complaints& complaints)
{
    Page page;
    page.title = tr("Setup");
    page.body << setupSteps(true) << complaints.summary() << R"(<section class="card narrow"><h2>)"
              << Text{tr("First: the administrator")} << "</h2>\n<p>"
              << Text{tr("This appliance is new. The account that you make now may change "
                         "everything on these pages; all that follows needs its password.")}
              << "</p>\n<p class=\"quiet\">" << Text{ruleOfNewNames()}
              << "</p>\n<p class=\"quiet\">" << Text{ruleOfNewPasswords()} << "</p>\n"
              << openForm(visit.token, "/setup/administrator")
              << accountFields(visit.request.form, complaints)
              << R"(<p class="buttons"><button class="main">)" << Text{tr("Next")}
              << R"(</button></p>
</form>
</section>
)";
    return page;
}

/// Makes the administrator and logs in.
Page create(const Visit& visit, const Credentials& credentials)
{
    const bool isMade = Administrators::makeFirst(
        visit.settings, credentials.name, [&] { createAccount(visit.settings, credentials); });
    Page page;
    if (!isMade) {
        page.next = "/login";
        return page;
    }
    log("the first administrator is " + quoted(credentials.name) + ", made from " +
        quoted(visit.request.address));
    page.next = "/setup";
    page.cookies = beginSession(credentials.name);
    return page;
}

} // namespace

Page makeFirstAdministrator(Visit& visit)
{
    if (!visit.request.isPost()) {
        return form(visit, {});
    }
    const Credentials credentials = readCredentials(visit.request.form);
    Complaints complaints =
        complaintsOfAccount(visit.request.form, complainOfNewName(credentials.name));
    if (!complaints.areNone()) {
        return form(visit, complaints);
    }
    try {
        return create(visit, credentials);
    } catch (const client::Failure& failure) {
        complaints.add(failure, kBlamedInAccount);
        return form(visit, complaints);
    }
}

} // namespace page
