// SPDX-License-Identifier: MIT
//
// The switch of the remote-sync daemon.
#include <chrono>
#include <optional>
#include <thread>

#include "page/layout.h"
#include "page/pages.h"
#include "page/process.h"
#include "vokcontrol.h"

namespace page {
namespace {

/// What a form asks for; nothing where there is no form.
std::optional<bool> wantedState(const Request& request)
{
    if (!request.isPost()) {
        return std::nullopt;
    }
    const std::string_view wanted = request.form.value("switch");
    if (wanted != "on" && wanted != "off") {
        throw Refusal(kBadRequest, "The switch is either on or off.");
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
    if (isDone) {
        return notice(Mood::kGood, Html() << (isOn ? Literal("<p>Sync was switched on.</p>")
                                                   : Literal("<p>Sync was switched off.</p>")));
    }
    return notice(Mood::kBad, Html()
                                  << (isOn ? Literal("<p>The sync daemon could not be started.</p>")
                                           : Literal("<p>The sync daemon does not stop.</p>")));
}

Html state(bool isOn)
{
    return Html() << R"(<p class="state">)"
                  << (isOn ? badge("recent", "&#10003;", "On") : badge("none", "&ndash;", "Off"))
                  << " The sync daemon is " << (isOn ? Literal("") : Literal("not "))
                  << "running.</p>\n";
}

Html switchForm(const Visit& visit, bool isOn)
{
    if (!visit.visitor.isAdministrator) {
        return Html() << "<p>Only an administrator can switch it.</p>\n";
    }
    return Html() << openForm(visit.token, "/sync")
                  << R"(<p class="buttons"><button class="main" name="switch" value=")"
                  << (isOn ? Literal("off") : Literal("on")) << R"(">)"
                  << (isOn ? Literal("Switch off") : Literal("Switch on"))
                  << "</button></p>\n</form>\n";
}

} // namespace

Page makeSync(Visit& visit)
{
    const std::optional<bool> wanted = wantedState(visit.request);
    Page page;
    page.title = "Sync";
    page.body << R"(<section class="card narrow" aria-labelledby="sync">
<h2 id="sync">Remote sync</h2>
<p>Keeps the shares in step with a remote place for as long as it is on.</p>
)";
    if (wanted) {
        page.body << outcome(*wanted, switchTo(*wanted, visit.script));
    }
    const bool isOn = isProcessRunning(kSyncDaemon);
    page.body << state(isOn) << switchForm(visit, isOn) << "</section>\n";
    return page;
}

} // namespace page
