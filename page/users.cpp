// SPDX-License-Identifier: MIT
//
// The users of the appliance: who there is, and a form for another one.
#include <array>
#include <string>
#include <vector>

#include "client/failure.h"
#include "client/lists.h"
#include "cmdsvc/protocol.h"
#include "page/account_fields.h"
#include "page/accounts.h"
#include "page/administrators.h"
#include "page/complaints.h"
#include "page/deed.h"
#include "page/layout.h"
#include "page/log.h"
#include "page/new_account.h"
#include "page/pages.h"
#include "page/phrase.h"
#include "page/service.h"
#include "text/translation.h"
#include "view/wording.h"

namespace page {
namespace {

using text::tr;
using text::trc;

constexpr Literal kUrl = "/users";

constexpr auto kDeeds = std::to_array<DeedSentence>({
    {"user", text::mark("The user {} was created.")},
    {"checked", text::mark("The password is right: {} can log in with it.")},
});

// ---- Creating ---------------------------------------------------------------------------------

/// Creates the user that a form asks for.
Complaints create(const Visit& visit)
{
    const Credentials credentials = readCredentials(visit.request.form);
    Complaints complaints = complaintsOfAccount(
        visit.request.form, credentials.name.empty() ? tr("Give the user a name.") : "");
    if (!complaints.areNone()) {
        return complaints;
    }
    try {
        createAccount(visit.settings, credentials);
        log(quoted(visit.visitor.account) + " has created the user " + quoted(credentials.name));
    } catch (const client::Failure& failure) {
        complaints.add(failure, kBlamedInAccount);
    }
    return complaints;
}

Html creation(const Visit& visit, const Complaints& complaints)
{
    return Html() << R"(<section class="card narrow" aria-labelledby="create">
<h2 id="create">)" << Text{tr("Create a user")}
                  << R"(</h2>
<p class="quiet">)"
                  << Text{view::joinSentences(
                         nameRule(cmdsvc::kLongestUserName),
                         tr("The password has 8 to 32 characters. With both the user logs in on "
                            "these pages and opens shares from other computers."))}
                  << "</p>\n"
                  << openForm(visit.token, kUrl) << accountFields(visit.request.form, complaints)
                  << R"(<p class="buttons"><button class="main">)" << Text{tr("Create")}
                  << R"(</button></p>
</form>
</section>
)";
}

// ---- The list ---------------------------------------------------------------------------------

/// A user's row; administrators see who is one.
Html row(const std::string& user, const Visit& visit, const Administrators& administrators)
{
    Html out;
    out << R"(<tr><th scope="row"><bdi>)" << Text{user} << "</bdi></th>";
    if (visit.visitor.isAdministrator) {
        out << "<td>"
            << Text{administrators.contains(user) ? tr("may look and change things")
                                                  : tr("may look")}
            << "</td>";
    }
    return out << "</tr>\n";
}

Html table(const std::vector<std::string>& users, const Visit& visit)
{
    const Administrators administrators(visit.settings);
    Html out;
    out << R"(<table class="listing">
<caption>)"
        << Text{text::fill(text::trn("{} user", "{} users", users.size()),
                           {std::to_string(users.size())})}
        << R"(</caption>
<thead><tr><th scope="col">)"
        << Text{trc("of a user", "Name")} << "</th>";
    if (visit.visitor.isAdministrator) {
        out << R"(<th scope="col">)" << Text{tr("On these pages")} << "</th>";
    }
    out << "</tr></thead>\n<tbody>\n";
    for (const std::string& user : users) {
        out << row(user, visit, administrators);
    }
    return out << "</tbody>\n</table>\n";
}

Html listing(const Visit& visit)
{
    try {
        const std::vector<std::string> users = client::fetchUsers(connectionOf(visit.settings));
        return users.empty()
                   ? Html() << "<p>" << Text{tr("The appliance has no users yet.")} << "</p>\n"
                   : table(users, visit);
    } catch (const client::Failure& failure) {
        return notice(Mood::kBad, Html() << "<p>"
                                         << phrase(tr("The list of users cannot be read. {}"),
                                                   {Html() << Text{explain(failure)}})
                                         << "</p>");
    }
}

Html list(const Visit& visit)
{
    return Html() << R"(<section class="card" aria-labelledby="all">
<h2 id="all">)" << Text{tr("All users")}
                  << "</h2>\n"
                  << listing(visit) << "</section>\n";
}

Page show(const Visit& visit, const Complaints& complaints)
{
    Page page;
    page.title = tr("Users");
    page.body << tellDeed(visit.request, kDeeds, page.cookies) << complaints.summary()
              << list(visit);
    if (visit.visitor.isAdministrator) {
        page.body << creation(visit, complaints) << R"(<p><a href=")" << kProgramUrl
                  << R"(/users/check">)" << Text{tr("Check the password of a user")}
                  << "</a></p>\n";
    } else {
        page.body << "<p>" << Text{tr("Only an administrator can create users.")} << "</p>\n";
    }
    return page;
}

} // namespace

Page makeUsers(Visit& visit)
{
    if (!visit.request.isPost()) {
        return show(visit, {});
    }
    const Complaints complaints = create(visit);
    return complaints.areNone()
               ? leadTo("/users", {"user", {readCredentials(visit.request.form).name}})
               : show(visit, complaints);
}

} // namespace page
