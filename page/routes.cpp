// SPDX-License-Identifier: MIT
#include "page/routes.h"

#include <algorithm>
#include <array>

#include "config/configuration.h"
#include "page/appliance_name.h"
#include "page/language.h"
#include "page/log.h"
#include "page/origin.h"
#include "page/response.h"
#include "page/slots.h"
#include "page/token.h"
#include "text/translation.h"

namespace page {
namespace {

using text::mark;
using text::tr;
using enum Level;

constexpr std::chrono::seconds kRetryAfter{2};

// clang-format off
constexpr auto kPages = std::to_array<PageEntry>({
    // path                   label             page                    read            write           listed
    {"",                      mark("Overview"), makeOverview,           kAccount,       std::nullopt,   true},
    {"/share",                "Share",          makeShare,              kAccount,       std::nullopt,   false},
    {"/shares",               mark("Shares"),   makeShares,             kAccount,       kAdministrator, true},
    {"/users",                mark("Users"),    makeUsers,              kAccount,       kAdministrator, true},
    {"/users/check",          "Password",       makePasswordCheck,      kAdministrator, kAdministrator, false},
    {"/collection",           "Collection",     makeCollection,         kAccount,       kAdministrator, false},
    {"/setup",                mark("Setup"),    makeSetup,              kAdministrator, kAdministrator, true},
    {"/setup/administrator",  "Administrator",  makeFirstAdministrator, kNewcomer,      kNewcomer,      false},
    {"/sync",                 mark("Sync"),     makeSync,               kAccount,       kAdministrator, true},
    {"/login",                "Log in",         makeLogin,              kAnybody,       kAnybody,       false},
    {"/logout",               "Log out",        makeLogout,             std::nullopt,   kAccount,       false},
    {"/language",             "Language",       makeLanguage,           std::nullopt,   kAnybody,       false},
    {"/help",                 "Help",           makeHelp,               kAnybody,       std::nullopt,   false},
});
// clang-format on

const PageEntry& findPage(const Request& request)
{
    const std::string_view path = (request.path == "/") ? "" : std::string_view(request.path);
    const auto* entry = std::ranges::find(kPages, path, &PageEntry::path);
    if (entry == kPages.end()) {
        throw Refusal(kNotFound, tr("There is no such page."));
    }
    return *entry;
}

/// Who may send what was asked for.
Level levelOf(const PageEntry& entry, const Request& request)
{
    const std::optional<Level> level = request.isPost() ? entry.write : entry.read;
    if (!level) {
        throw Refusal(kMethodNotAllowed, request.isPost() ? tr("This page takes no forms.")
                                                          : tr("This page takes only forms."));
    }
    return *level;
}

/// The page for who may not have the one that was asked for. Who has logged in goes on from the
/// first administrator to the rest of the setup.
Page turnAway(Level level, const Request& request, const Visitor& visitor)
{
    Page page;
    if (!visitor.account.empty() && level == kNewcomer) {
        page.next = "/setup";
        return page;
    }
    if (!visitor.account.empty()) {
        throw Refusal(kForbidden, tr("Only an administrator may do this."));
    }
    if (request.isPost()) {
        throw Refusal(kForbidden,
                      tr("You are not logged in, or your login has ended. Nothing was changed. Log "
                         "in and repeat what you did."));
    }
    page.next = visitor.mayBegin ? "/setup/administrator" : "/login";
    return page;
}

Page makePage(const PageEntry& entry, Visit& visit)
{
    const Level level = levelOf(entry, visit.request);
    if (!admits(level, visit.visitor)) {
        return turnAway(level, visit.request, visit.visitor);
    }
    checkToken(visit.request, visit.visitor);
    if (visit.request.isPost() && !visit.visitor.account.empty()) {
        log(quoted(visit.visitor.account) + " sends a form to " + quoted(visit.request.path));
    }
    return entry.make(visit);
}

/// The page in its frame, if that is wanted. The name comes last: the page may just have changed
/// it.
Html finish(const Page& page, const PageEntry& entry, const Visit& visit, const std::string& nonce)
{
    if (page.isFragment) {
        return page.body;
    }
    return layOut({kPages, entry.path, nonce, askApplianceName(), visit.visitor, visit.token,
                   visit.request.rawQuery},
                  page, visit.script);
}

Response respond(const Page& page, const PageEntry& entry, const Visit& visit)
{
    Response response;
    response.nonce = makeToken();
    response.cookies = page.cookies;
    response.isSecure = visit.request.isSecure;
    response.status = page.next ? kSeeOther : page.status;
    response.retryAfter = page.retryAfter;
    if (page.next) {
        response.location.append(kProgramUrl.view()).append(*page.next).append(page.nextQuery);
    } else {
        response.page = finish(page, entry, visit, response.nonce);
    }
    return response;
}

/// Few pages are made at a time.
Descriptor requireSlot(const Visitor& visitor)
{
    std::optional<Descriptor> slot = takeSlot(visitor.account.empty());
    if (!slot) {
        throw Refusal(kBusy, tr("The appliance is busy with other requests. Try again."));
    }
    return *std::move(slot);
}

/// @param known  becomes the visitor as soon as nothing speaks against the request's origin
Response answerGood(const Variables& variables, int body, Visitor& known)
{
    text::speak(languageOfVisitor(variables));
    const config::Configuration settings = config::read();
    Request request = readHead(variables);
    Script script;
    const Visitor visitor = identify(request, settings, script);
    const Descriptor slot = requireSlot(visitor);
    checkHost(request, settings.hosts, [] { return askApplianceName(); });
    checkOrigin(request);
    known = visitor;
    const PageEntry& entry = findPage(request);
    if (request.isPost()) {
        request.form = readForm(variables, body);
    }
    const std::string newToken = visitor.formToken.empty() ? makeToken() : "";
    Visit visit{request, settings, visitor, visitor.formToken + newToken, script};
    Page page = makePage(entry, visit);
    if (!newToken.empty()) {
        page.cookies.push_back({kTokenCookie, newToken});
    }
    return respond(page, entry, visit);
}

/// The methods that the page at a path takes.
std::string allowedAt(std::string_view path)
{
    const auto* entry = std::ranges::find(kPages, path, &PageEntry::path);
    const bool isForFormsAlone = entry != kPages.end() && !entry->read;
    return isForFormsAlone ? "POST" : "GET, HEAD";
}

/// @param visitor  whose menu is shown; nobody in particular if it is not known who asks
Response answerBad(const Variables& variables, int status, const std::string& reason,
                   const Visitor& visitor = {})
{
    Response response;
    response.status = status;
    response.nonce = makeToken();
    if (status == kMethodNotAllowed) {
        response.allowed = allowedAt(variables["PATH_INFO"]);
    }
    if (status == kBusy) {
        response.retryAfter = kRetryAfter;
    }
    const Page page = {
        .title = tr("That did not work"),
        .body = Html() << notice(Mood::kBad, Html() << "<p>" << Text{reason} << "</p>")
                       << R"(<p class="buttons"><a class="button" href=")" << kProgramUrl << R"(">)"
                       << Text{tr("To the overview")} << "</a></p>\n",
    };
    response.page =
        layOut({kPages, "-", response.nonce, lastApplianceName(), visitor, visitor.formToken}, page,
               Script());
    return response;
}

Response makeResponse(const Variables& variables, int body)
{
    Visitor known;
    try {
        return answerGood(variables, body, known);
    } catch (const Refusal& refusal) {
        return answerBad(variables, refusal.status(), refusal.what(), known);
    } catch (const config::BadConfiguration& failure) {
        log(failure.what());
        return answerBad(variables, kFailure,
                         tr("The appliance's settings cannot be read, so nothing was done. The web "
                            "server's log tells what has to be corrected."));
    } catch (const std::exception& failure) {
        log(failure.what());
        return answerBad(variables, kFailure,
                         tr("The page could not be made. The web server's log tells why."), known);
    }
}

} // namespace

std::span<const PageEntry> pages()
{
    return kPages;
}

std::string refuse(const Variables& variables, int status, const std::string& reason)
{
    return render(answerBad(variables, status, reason), variables["REQUEST_METHOD"] == "HEAD");
}

std::string answer(const Variables& variables, int body)
{
    return render(makeResponse(variables, body), variables["REQUEST_METHOD"] == "HEAD");
}

} // namespace page
