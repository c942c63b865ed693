// SPDX-License-Identifier: MIT
//
// The appliance at a glance: what needs attention, how full the disk is, shares, drives and
// printers, network, system.
#include <array>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "page/devices.h"
#include "page/layout.h"
#include "page/overview_arrays.h"
#include "page/overview_capacity.h"
#include "page/overview_collection.h"
#include "page/overview_devices.h"
#include "page/overview_findings.h"
#include "page/overview_shares.h"
#include "page/pages.h"
#include "page/past.h"
#include "page/process.h"
#include "text/translation.h"
#include "view/judgement.h"
#include "view/wording.h"
#include "vokcontrol.h"

namespace page {
namespace {

using text::tr;
using view::PublishedStatus;

/// All that the page shows.
struct Facts {
    view::Situation situation;
    view::Progress progress;
    Past past;
    std::optional<std::vector<Device>> devices;
    bool isSetUp = false;
    bool isSyncOn = false;
    std::string address;
    std::string hardwareAddress;
    std::string protocol;
    std::string gateway;
    std::string netmask;
    std::string build;
};

std::optional<std::vector<Device>> listDevices()
{
    std::array<DriveInfo, 4> records = {};
    if (::getDriveInfos(records.data()) != 0) {
        return std::nullopt;
    }
    return readDevices(records);
}

Facts gather(Script& script)
{
    return script.run([] {
        Facts facts;
        facts.devices = listDevices();
        ::printTovHDDs();
        facts.isSetUp = ::getvar("firsttime")[0] == '0';
        facts.address = ::getvar("lan_ipaddr");
        facts.hardwareAddress = ::getvar("lan_hwaddr");
        facts.protocol = ::getvar("lan_proto");
        facts.gateway = ::getvar("lan_gateway");
        facts.netmask = ::getvar("lan_netmask");
        facts.build = ::getvar("build_version");
        facts.isSyncOn = isProcessRunning(kSyncDaemon);
        facts.situation = view::readSituation();
        facts.progress = findProgress(facts.situation.status);
        facts.past = readPast(facts.situation.now, facts.situation.capacity);
        return facts;
    });
}

// ---- Shares -----------------------------------------------------------------------------------

/// A part of the page that the script replaces when a collection has ended.
Html livePart(Literal id, const Html& content)
{
    return Html() << R"(<div id=")" << id << R"(" data-live>
)" << content << "</div>\n";
}

Html publishedTime(const view::Situation& situation)
{
    const std::time_t published = situation.status.published;
    if (published == 0) {
        return {};
    }
    const std::string words =
        text::fill(tr("Published {1}, {2}."),
                   {view::formatElapsed(published, situation.now), view::formatTime(published)});
    return Html() << R"(<p class="quiet">)" << Text{words} << "</p>\n";
}

/// What stands in the place of the table.
const char* reasonForNone(const PublishedStatus& status)
{
    using enum PublishedStatus::Result;
    switch (status.result) {
    case kNone:
        return tr("Nothing has been published yet.");
    case kDamaged:
        return tr("The share status is damaged. The next collection replaces it.");
    case kNoList:
        return tr("The last collection could not get the list of shares.");
    case kComplete:
        break;
    }
    return tr("There are no internal shares.");
}

/// Nothing can be started while a collection runs, or while the mark of an interrupted one stays.
Html measureAction(const Visit& visit, const view::Situation& situation, const ShareOrder& order)
{
    const bool isBlocked = view::blockedUntil(situation.status).value_or(0) > situation.now;
    if (!visit.visitor.isAdministrator || situation.status.isCollecting || isBlocked) {
        return {};
    }
    return measureForm(visit.token, order);
}

Html shareList(const Visit& visit, const Facts& facts, const ShareOrder& order)
{
    const view::Situation& situation = facts.situation;
    if (situation.status.shares.empty()) {
        return Html() << R"(<div class="empty">
<p>)" << Text{reasonForNone(situation.status)}
                      << "</p>\n"
                      << measureAction(visit, situation, order) << "</div>\n";
    }
    return shareTable(situation, visit.settings, order, facts.past);
}

Html sharesCard(const Visit& visit, const Facts& facts, const ShareOrder& order)
{
    return Html() << R"(<section class="card" aria-labelledby="shares">
<h2 id="shares">)" << Text{tr("Shares")}
                  << "</h2>\n"
                  << livePart("published", publishedTime(facts.situation))
                  << R"(<div id="collection" role="status">
)" << collectionState(facts.situation.status, facts.progress)
                  << "</div>\n"
                  << livePart("share-list", shareList(visit, facts, order)) << "</section>\n";
}

// ---- The disk ---------------------------------------------------------------------------------

/// The button is where there is something to see: at the disk, or in the place of the table.
Html diskCard(const Visit& visit, const Facts& facts, const ShareOrder& order)
{
    const view::Situation& situation = facts.situation;
    const bool isEmpty = situation.status.shares.empty();
    return capacityCard(situation, facts.past.daysUntilFull,
                        isEmpty ? Html() : measureAction(visit, situation, order));
}

// ---- Network and system -----------------------------------------------------------------------

std::string wordProtocol(const std::string& protocol)
{
    return (protocol == "dhcp_client") ? tr("automatic (DHCP)") : protocol;
}

Html networkCard(const Facts& facts)
{
    return Html() << R"(<section class="card" aria-labelledby="network">
<h2 id="network">)"
                  << Text{tr("Network")} << "</h2>\n<dl class=\"facts\">\n"
                  << fact(tr("Address"), facts.address) << fact(tr("Network mask"), facts.netmask)
                  << fact(tr("Gateway"), facts.gateway)
                  << fact(tr("Hardware address"), facts.hardwareAddress)
                  << fact(tr("Configuration"), wordProtocol(facts.protocol))
                  << "</dl>\n</section>\n";
}

Html systemCard(const Facts& facts)
{
    return Html() << R"(<section class="card" aria-labelledby="system">
<h2 id="system">)" << Text{tr("System")}
                  << "</h2>\n<dl class=\"facts\">\n"
                  << fact(tr("Build"), facts.build)
                  << fact(tr("Remote sync"), facts.isSyncOn ? tr("on") : tr("off"))
                  << "</dl>\n</section>\n";
}

Html setupHint()
{
    return notice(Mood::kNeutral, Html() << "<p>"
                                         << Text{tr("This appliance has not been set up yet.")}
                                         << R"( <a href=")" << kProgramUrl << R"(/setup">)"
                                         << Text{tr("Set it up now")} << "</a></p>");
}

} // namespace

Page makeOverview(Visit& visit)
{
    const Facts facts = gather(visit.script);
    const ShareOrder& order = readOrder(visit.request.query.value("sort"));
    Page page;
    page.title = tr("Overview");
    if (facts.situation.status.isCollecting) {
        page.head = reloadWithoutScript(order, visit.request.query.value("wait"));
    }
    const bool isHinted = !facts.isSetUp && visit.visitor.isAdministrator;
    page.body << (isHinted ? setupHint() : Html())
              << livePart("findings", findingsNotice(view::judge(facts.situation, visit.settings)))
              << livePart("disk", diskCard(visit, facts, order)) << sharesCard(visit, facts, order)
              << R"(<div class="columns"><div>)" << arraysCard(facts.situation.arrays)
              << devicesCard(facts.devices) << R"(</div><div>)" << networkCard(facts)
              << systemCard(facts) << "</div></div>\n";
    return page;
}

} // namespace page
