// SPDX-License-Identifier: MIT
#include "page/service.h"

#include "client/reasons.h"
#include "page/log.h"
#include "text/translation.h"
#include "view/sentences.h"

namespace page {
namespace {

using text::tr;

const char* wordsFor(client::ExitCode code)
{
    switch (code) {
    case client::kNoAnswer:
        return tr("The appliance's service has not answered in time. What you asked for may have "
                  "been done all the same: look before you repeat it.");
    case client::kUnreachable:
        return tr("The appliance's service does not answer. Try again in a minute.");
    case client::kNotPermitted:
        return tr("The appliance's service and the pages do not trust each other. The web "
                  "server's log says why.");
    case client::kWrongUsage:
        return tr("What you have typed cannot be sent to the appliance's service.");
    default:
        return tr("The answer of the appliance's service cannot be read. The web server's log "
                  "says more.");
    }
}

/// What the appliance's programs have said about it.
std::string reasonsOf(const client::Refused& refused)
{
    std::string lines;
    for (const std::string& line : client::reasonLines(refused.reasons())) {
        lines += (lines.empty() ? "" : "; ") + line;
    }
    return lines.empty() ? "" : " " + text::fill(tr("The appliance says: {}"), {lines});
}

} // namespace

client::Connection connectionOf(const config::Configuration& settings)
{
    constexpr unsigned kPatience = 20;
    return {.socket = settings.socket, .timeout = kPatience};
}

std::string explain(const client::Failure& failure)
{
    if (const auto* refused = dynamic_cast<const client::Refused*>(&failure)) {
        return view::refusalForPeople(refused->command(), refused->status()) + reasonsOf(*refused);
    }
    log(failure.what());
    return wordsFor(failure.code());
}

} // namespace page
