// SPDX-License-Identifier: MIT
#include "page/share_form.h"

#include "client/exchange.h"
#include "cmdsvc/protocol.h"
#include "page/layout.h"
#include "page/phrase.h"
#include "text/translation.h"
#include "view/wording.h"

namespace page {
namespace {

using text::tr;

// ---- Fields -----------------------------------------------------------------------------------

Html nameField(const NewShare& share, const Complaints& complaints)
{
    const std::string_view words = complaints.about("name");
    return Html() << R"(<p class="field"><label for="name">)" << Text{tr("Name")} << R"(</label>
<input id="name" name="name" value=")"
                  << Text{share.name}
                  << R"(" required maxlength="64" autocomplete="off" spellcheck="false")"
                  << invalidMark("name-complaint", words) << "></p>\n"
                  << complaint("name-complaint", words);
}

Html accessChoice(Literal id, std::string_view label, bool isChosen, std::string_view words)
{
    return Html() << R"(<p class="choice"><label for=")" << id << R"("><input id=")" << id
                  << R"(" name="access" value=")" << id << R"(" type="radio" required)"
                  << (isChosen ? Literal(" checked") : Literal(""))
                  << invalidMark("access-complaint", words) << "> " << Text{label}
                  << "</label></p>\n";
}

Html userChoice(const Candidates& candidates, std::string_view chosen, std::string_view words)
{
    Html out;
    out << R"(<p class="field"><label for="user">)" << Text{tr("This user")} << R"(</label>
<select id="user" name="user")"
        << invalidMark("user-complaint", words) << R"(><option value="">)" << Text{tr("choose one")}
        << "</option>";
    for (const std::string& user : candidates.users) {
        out << R"(<option value=")" << Text{user} << R"(")"
            << (user == chosen ? Literal(" selected") : Literal("")) << ">" << Text{user}
            << "</option>";
    }
    return out << "</select></p>\n" << complaint("user-complaint", words);
}

/// A private share needs a user whom it is for.
Html privateChoice(const NewShare& share, const Candidates& candidates,
                   const Complaints& complaints)
{
    if (!candidates.failure.empty()) {
        return Html() << R"(<p class="quiet">)"
                      << phrase(tr("A share for one user cannot be created now. {}"),
                                {Html() << Text{candidates.failure}})
                      << "</p>\n";
    }
    if (candidates.users.empty()) {
        const Html linkStart = Html() << R"(<a href=")" << kProgramUrl << R"(/users">)";
        return Html() << R"(<p class="quiet">)"
                      << phrase(tr("A share for one user needs {1}a user{2} first."),
                                {linkStart, Html() << "</a>"})
                      << "</p>\n";
    }
    return Html() << accessChoice("one", tr("One user alone"), share.access == Access::kOneUser,
                                  complaints.about("everybody"))
                  << userChoice(candidates, share.user, complaints.about("user"));
}

Html accessFields(const NewShare& share, const Candidates& candidates, const Complaints& complaints)
{
    const std::string_view words = complaints.about("everybody");
    return Html() << "<fieldset>\n<legend>" << Text{tr("Who may read and write what is in it")}
                  << "</legend>\n"
                  << complaint("access-complaint", words)
                  << accessChoice("everybody", tr("Everybody in the network"),
                                  share.access == Access::kEverybody, words)
                  << privateChoice(share, candidates, complaints) << "</fieldset>\n";
}

} // namespace

NewShare readNewShare(const Form& form)
{
    NewShare share;
    share.name = trim(form.value("name"));
    share.user = form.value("user");
    if (form.value("access") == "everybody") {
        share.access = Access::kEverybody;
    } else if (form.value("access") == "one") {
        share.access = Access::kOneUser;
    }
    return share;
}

Complaints complaintsOf(const NewShare& share)
{
    Complaints complaints;
    complaints.add("name", share.name.empty() ? tr("Give the share a name.") : "");
    complaints.add("everybody", share.access ? "" : tr("Choose who may use the share."));
    if (share.access == Access::kOneUser && share.user.empty()) {
        complaints.add("user", tr("Choose the user whom the share is for."));
    }
    return complaints;
}

void createShare(const client::Connection& connection, const NewShare& share)
{
    if (share.access == Access::kOneUser) {
        client::askToDo(connection, {cmdsvc::command("shar"), {share.user, share.name}});
    } else {
        client::askToDo(connection, {cmdsvc::command("pshr"), {"guest", share.name}});
    }
}

Html shareForm(const Visit& visit, const Candidates& candidates, const Complaints& complaints)
{
    const NewShare share = readNewShare(visit.request.form);
    return Html() << R"(<section class="card narrow" aria-labelledby="create">
<h2 id="create">)" << Text{tr("Create a share")}
                  << R"(</h2>
<p class="quiet">)"
                  << Text{view::joinSentences(
                         nameRule(cmdsvc::kLongestShareName),
                         tr("These pages cannot rename or delete a share later."))}
                  << "</p>\n"
                  << openForm(visit.token, "/shares") << nameField(share, complaints)
                  << accessFields(share, candidates, complaints)
                  << R"(<p class="buttons"><button class="main">)" << Text{tr("Create")}
                  << R"(</button></p>
</form>
</section>
)";
}

} // namespace page
