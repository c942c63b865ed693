// SPDX-License-Identifier: MIT
//
// The shares of the appliance: which there are, who may use them, and a form for another one.
#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "client/failure.h"
#include "client/lists.h"
#include "core/bytes.h"
#include "page/complaints.h"
#include "page/deed.h"
#include "page/layout.h"
#include "page/log.h"
#include "page/pages.h"
#include "page/phrase.h"
#include "page/service.h"
#include "page/share_form.h"
#include "text/translation.h"

namespace page {
namespace {

using text::mark;
using text::tr;
using text::trc;

constexpr auto kDeeds = std::to_array<DeedSentence>({
    {"public", mark("The share {} was created. Everybody in the network may read and write what "
                    "is in it. The overview shows it after the next collection.")},
    {"private", mark("The share {1} was created. {2} alone may read and write what is in it. The "
                     "overview shows it after the next collection.")},
});

constexpr auto kBlamed = std::to_array<BlamedField>({
    {cmdsvc::kMalformed, "name"},
    {cmdsvc::kShareNameTaken, "name"},
    {cmdsvc::kShareNameTooLong, "name"},
    {cmdsvc::kNoSuchUser, "user"},
});

// ---- Creating ---------------------------------------------------------------------------------

/// Creates the share that a form asks for.
Complaints create(const Visit& visit)
{
    const NewShare share = readNewShare(visit.request.form);
    Complaints complaints = complaintsOf(share);
    if (!complaints.areNone()) {
        return complaints;
    }
    try {
        createShare(connectionOf(visit.settings), share);
        log(quoted(visit.visitor.account) + " has created the share " + quoted(share.name));
    } catch (const client::Failure& failure) {
        complaints.add(failure, kBlamed);
    }
    return complaints;
}

Deed deedOf(const NewShare& share)
{
    return share.access == Access::kEverybody ? Deed{"public", {share.name}}
                                              : Deed{"private", {share.name, share.user}};
}

Html paragraph(const char* words)
{
    return Html() << "<p>" << Text{words} << "</p>\n";
}

// ---- The list ---------------------------------------------------------------------------------

/// What a share's property means; one that is not known is shown as it is.
Html access(const std::string& property)
{
    if (property == client::kPublicProperty) {
        return Html() << Text{tr("everybody in the network")};
    }
    if (property == client::kPrivateProperty) {
        return Html() << Text{tr("only users who were given access")};
    }
    return apart(property);
}

Html row(const client::Share& share)
{
    return Html() << R"(<tr><th scope="row"><bdi>)" << Text{share.name} << "</bdi></th><td>"
                  << access(share.property) << "</td></tr>\n";
}

std::string caption(const client::ShareList& list)
{
    const std::size_t count = list.shares.size();
    return text::fill(text::trn("{1} share; on the appliance's own disks: {2}",
                                "{1} shares; on the appliance's own disks: {2}", count),
                      {std::to_string(count), std::to_string(list.internal)});
}

Html table(const client::ShareList& list)
{
    Html out;
    out << R"(<table class="listing">
<caption>)"
        << Text{caption(list)} << R"(</caption>
<thead><tr><th scope="col">)"
        << Text{trc("of a share", "Name")} << R"(</th><th scope="col">)"
        << Text{tr("Who may read and write")} << "</th></tr></thead>\n<tbody>\n";
    for (const client::Share& share : list.shares) {
        out << row(share);
    }
    return out << "</tbody>\n</table>\n";
}

/// Which share the setup has made for everybody.
Html publicShare(const std::string& name, const client::ShareList& list)
{
    if (name.empty()) {
        return {};
    }
    const bool isThere = std::ranges::any_of(list.shares, [&name](const client::Share& share) {
        return core::equalIgnoringCase(share.name, name);
    });
    const auto names = std::to_array({name});
    return Html() << "<p>"
                  << phrase(isThere ? tr("The public share that the setup names is {}.")
                                    : tr("The setup names {} as the public share, but there is no "
                                         "share of this name."),
                            names)
                  << "</p>\n";
}

Html listing(const Visit& visit)
{
    const client::Connection service = connectionOf(visit.settings);
    try {
        const client::ShareList list = client::fetchShares(service);
        const std::string publicName = client::fetchPublicName(service);
        return Html() << (list.shares.empty() ? paragraph(tr("The appliance has no shares yet."))
                                              : table(list))
                      << publicShare(publicName, list);
    } catch (const client::Failure& failure) {
        return notice(Mood::kBad, Html() << "<p>" << Text{tr("The list of shares cannot be read.")}
                                         << " " << Text{explain(failure)} << "</p>");
    }
}

// ---- The page ---------------------------------------------------------------------------------

Html creation(const Visit& visit, const Complaints& complaints)
{
    if (!visit.visitor.isAdministrator) {
        return paragraph(tr("Only an administrator can create shares."));
    }
    Candidates candidates;
    try {
        candidates.users = client::fetchUsers(connectionOf(visit.settings));
    } catch (const client::Failure& failure) {
        candidates.failure = explain(failure);
    }
    return shareForm(visit, candidates, complaints);
}

Page show(const Visit& visit, const Complaints& complaints)
{
    Page page;
    page.title = tr("Shares");
    page.body << tellDeed(visit.request, kDeeds, page.cookies) << complaints.summary()
              << R"(<section class="card" aria-labelledby="all">
<h2 id="all">)"
              << Text{tr("All shares")} << "</h2>\n"
              << listing(visit) << "</section>\n"
              << creation(visit, complaints);
    return page;
}

} // namespace

Page makeShares(Visit& visit)
{
    if (!visit.request.isPost()) {
        return show(visit, {});
    }
    const Complaints complaints = create(visit);
    return complaints.areNone() ? leadTo("/shares", deedOf(readNewShare(visit.request.form)))
                                : show(visit, complaints);
}

} // namespace page
