// SPDX-License-Identifier: MIT
#include "page/routes.h"

#include <algorithm>
#include <array>
#include <iostream>

#include "config/configuration.h"
#include "page/layout.h"
#include "page/response.h"
#include "page/token.h"
#include "vokcontrol.h"

namespace page {
namespace {

constexpr auto kPages = std::to_array<PageEntry>({
    {"", "Overview", makeOverview, false},
    {"/setup", "Setup", makeSetup, true},
    {"/sync", "Sync", makeSync, true},
});

std::string applianceName()
{
    Script unused;
    return unused.run([] { return std::string(::getvar("machine_name")); });
}

const PageEntry& findPage(const Request& request)
{
    const std::string_view path = (request.path == "/") ? "" : std::string_view(request.path);
    const auto* entry = std::ranges::find(kPages, path, &PageEntry::path);
    if (entry == kPages.end()) {
        throw Refusal(kNotFound, "There is no such page.");
    }
    if (request.isPost() && !entry->takesForms) {
        throw Refusal(kMethodNotAllowed, "This page takes no forms.");
    }
    return *entry;
}

Response answerGood(std::FILE* body)
{
    const config::Configuration settings = config::read();
    const Request request = readRequest(body);
    checkHost(request, settings.hosts, applianceName);
    const PageEntry& entry = findPage(request);
    checkToken(request);

    Response response;
    response.nonce = makeToken();
    response.newToken = request.token.empty() ? makeToken() : "";
    Script script;
    Visit visit{request, request.token + response.newToken, script};
    const Page page = entry.make(visit);
    // The name comes last: the page may just have changed it.
    response.page = layOut({kPages, entry.path, response.nonce, applianceName()}, page, script);
    return response;
}

Response answerBad(int status, const std::string& reason)
{
    Response response;
    response.status = status;
    response.nonce = makeToken();
    const Page page = {
        .title = "That did not work",
        .body = notice(Mood::kBad, Html() << "<p>" << Text{reason} << "</p>"),
    };
    response.page = layOut({kPages, "-", response.nonce, ""}, page, Script());
    return response;
}

Response makeResponse(std::FILE* body)
{
    try {
        return answerGood(body);
    } catch (const Refusal& refusal) {
        return answerBad(refusal.status(), refusal.what());
    } catch (const config::BadConfiguration& failure) {
        std::cerr << "vokpage: " << failure.what() << "\n";
        return answerBad(kFailure,
                         "The appliance's settings cannot be read, so nothing was done. The "
                         "web server's log tells what has to be mended.");
    } catch (const std::exception& failure) {
        std::cerr << "vokpage: " << failure.what() << "\n";
        return answerBad(kFailure, "The page could not be made. The web server's log tells why.");
    }
}

bool wantsHeadersOnly()
{
    const char* method = std::getenv("REQUEST_METHOD");
    return method != nullptr && std::string_view(method) == "HEAD";
}

} // namespace

std::string answer(std::FILE* body)
{
    return render(makeResponse(body), wantsHeadersOnly());
}

} // namespace page
