// SPDX-License-Identifier: MIT
//
// The switch of the remote-sync daemon.
#include <chrono>
#include <optional>
#include <thread>

#include "page/layout.h"
#include "page/pages.h"
#include "page/process.h"
#include "text/translation.h"
#include "vokcontrol.h"

namespace page {
namespace {

using text::tr;
using text::trc;

/// What a form asks for; nothing where there is no form.
std::optional<bool> wantedState(const Request& request)
{
    if (!request.isPost()) {
        return std::nullopt;
    }
    const std::string_view wanted = request.form.value("switch");
    if (wanted != "on" && wanted != "off") {
        throw Refusal(kBadRequest, tr("The switch is either on or off."));
    }
    return wanted == "on";
}

/// Switches the daemon; it takes a moment to come and to go.
/// @return whether it is as wanted
bool switchTo(bool isOn, Script& script)
{
    constexpr std::chrono::milliseconds kPause{20};
    constexpr int kTries = 150;
    const int result = script.run([isOn] { return ::tideWaveFunc(isOn ? 1 : 0); });
    int tries = 0;
    while (result == 0 && isProcessRunning(kSyncDaemon) != isOn && tries < kTries) {
        std::this_thread::sleep_for(kPause);
        ++tries;
    }
    return result == 0 && tries < kTries;
}

Html outcome(bool isOn, bool isDone)
{
    const char* done = isOn ? tr("Sync was switched on.") : tr("Sync was switched off.");
    const char* failed =
        isOn ? tr("The sync daemon could not be started.") : tr("The sync daemon does not stop.");
    return notice(isDone ? Mood::kGood : Mood::kBad,
                  Html() << "<p>" << Text{isDone ? done : failed} << "</p>");
}

Html state(bool isOn)
{
    return Html() << R"(<p class="state">)"
                  << (isOn ? badge("recent", "&#10003;", trc("state of a switch", "On"))
                           : badge("none", "&ndash;", trc("state of a switch", "Off")))
                  << " "
                  << Text{isOn ? tr("The sync daemon is running.")
                               : tr("The sync daemon is not running.")}
                  << "</p>\n";
}

Html switchForm(const Visit& visit, bool isOn)
{
    if (!visit.visitor.isAdministrator) {
        return Html() << "<p>" << Text{tr("Only an administrator can switch it on or off.")}
                      << "</p>\n";
    }
    return Html() << openForm(visit.token, "/sync")
                  << R"(<p class="buttons"><button class="main" name="switch" value=")"
                  << (isOn ? Literal("off") : Literal("on")) << R"(">)"
                  << Text{isOn ? tr("Switch off") : tr("Switch on")} << "</button></p>\n</form>\n";
}

} // namespace

Page makeSync(Visit& visit)
{
    const std::optional<bool> wanted = wantedState(visit.request);
    Page page;
    page.title = tr("Sync");
    page.body << R"(<section class="card narrow" aria-labelledby="sync">
<h2 id="sync">)"
              << Text{tr("Remote sync")} << "</h2>\n<p>"
              << Text{tr("Keeps the shares in step with a remote place for as long as it is on.")}
              << "</p>\n";
    if (wanted) {
        page.body << outcome(*wanted, switchTo(*wanted, visit.script));
    }
    const bool isOn = isProcessRunning(kSyncDaemon);
    page.body << state(isOn) << switchForm(visit, isOn) << "</section>\n";
    return page;
}

} // namespace page
