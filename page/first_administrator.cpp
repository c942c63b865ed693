// SPDX-License-Identifier: MIT
//
// The first step of the first setup, which makes the administrator. All other steps need a login.
#include "client/failure.h"
#include "page/account_fields.h"
#include "page/accounts.h"
#include "page/administrators.h"
#include "page/layout.h"
#include "page/log.h"
#include "page/pages.h"

namespace page {
namespace {

/// What is wrong with an answer, in words; empty if nothing is.
struct Complaints {
    std::string_view name;
    std::string_view password;
    std::string other;

    [[nodiscard]] bool areNone() const { return name.empty() && password.empty() && other.empty(); }
};

Complaints complaintsOf(const Form& form)
{
    const Credentials credentials = readCredentials(form);
    Complaints complaints{.name = complainOfNewName(credentials.name),
                          .password = complainOfNewPassword(credentials.password),
                          .other = {}};
    if (complaints.password.empty() && form.value("repeated") != credentials.password) {
        complaints.password = "The two passwords differ.";
    }
    return complaints;
}

Html otherComplaint(const Complaints& complaints)
{
    if (complaints.other.empty()) {
        return {};
    }
    return notice(Mood::kBad, Html() << "<p>" << Text{complaints.other} << "</p>");
}

Page form(const Visit& visit, const Complaints& complaints)
{
    Page page;
    page.title = "Setup";
    page.body << setupSteps(true)
              << R"(<section class="card narrow"><h2>First: the administrator</h2>
<p>This appliance is new. The account that you make now may change everything on these pages; all that
follows needs its password.</p>
)" << otherComplaint(complaints)
              << openForm(visit.token, "/setup/administrator")
              << nameField(visit.request.form.value("name"), complaints.name)
              << passwordField("password", "Password", "new-password", complaints.password)
              << passwordField("repeated", "The password once more", "new-password", "")
              << R"(<p class="buttons"><button class="main">Next</button></p>
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
    Complaints complaints = complaintsOf(visit.request.form);
    if (!complaints.areNone()) {
        return form(visit, complaints);
    }
    try {
        return create(visit, readCredentials(visit.request.form));
    } catch (const client::Failure& failure) {
        complaints.other = std::string("The account was not made: ") + failure.what() + ".";
        return form(visit, complaints);
    }
}

} // namespace page
