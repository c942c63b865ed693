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
    constexpr int kBadRequest = 400;
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
    Html content;
    if (isDone) {
        content << (isOn ? Literal("<p>Sync was switched on.</p>")
                         : Literal("<p>Sync was switched off.</p>"));
    } else {
        content << (isOn ? Literal("<p>The sync daemon could not be started.</p>")
                         : Literal("<p>The sync daemon does not stop.</p>"));
    }
    return notice(isDone ? Mood::kGood : Mood::kBad, content);
}

Html state(bool isOn)
{
    Html out;
    out << R"(<p class="state">)";
    if (isOn) {
        out << R"(<span class="badge recent"><span aria-hidden="true">&#10003;</span> On</span> )"
            << "The sync daemon is running.";
    } else {
        out << R"(<span class="badge none"><span aria-hidden="true">&ndash;</span> Off</span> )"
            << "The sync daemon is not running.";
    }
    out << "</p>\n";
    return out;
}

Html switchForm(const Visit& visit, bool isOn)
{
    Html out;
    out << openForm(visit, "/sync")
        << R"(<p class="buttons"><button class="main" name="switch" value=")"
        << (isOn ? Literal("off") : Literal("on")) << R"(">)"
        << (isOn ? Literal("Switch off") : Literal("Switch on")) << "</button></p>\n</form>\n";
    return out;
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
