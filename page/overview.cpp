// SPDX-License-Identifier: MIT
//
// The appliance at a glance: shares, drives and printers, network, system.
#include <algorithm>
#include <array>
#include <ctime>
#include <string>
#include <vector>

#include "guard/values.h"
#include "page/devices.h"
#include "page/layout.h"
#include "page/pages.h"
#include "page/process.h"
#include "view/published_status.h"
#include "view/wording.h"
#include "vokcontrol.h"

namespace page {
namespace {

using view::BackupLevel;
using view::PublishedStatus;
using view::ShareRow;

/// All that the page shows.
struct Facts {
    PublishedStatus status;
    bool areDevicesKnown = false;
    std::vector<Device> devices;
    bool isSetUp = false;
    bool isSyncOn = false;
    std::string address;
    std::string hardwareAddress;
    std::string protocol;
    std::string gateway;
    std::string netmask;
    std::string build;
    std::time_t now = 0;
};

Facts gather(Script& script)
{
    return script.run([] {
        Facts facts;
        std::array<DriveInfo, 4> records = {};
        facts.areDevicesKnown = ::getDriveInfos(records.data()) == 0;
        facts.devices = readDevices(records);
        ::printTovHDDs();
        facts.isSetUp = ::getvar("firsttime")[0] == '0';
        facts.address = ::getvar("lan_ipaddr");
        facts.hardwareAddress = ::getvar("lan_hwaddr");
        facts.protocol = ::getvar("lan_proto");
        facts.gateway = ::getvar("lan_gateway");
        facts.netmask = ::getvar("lan_netmask");
        facts.build = ::getvar("build_version");
        facts.isSyncOn = isProcessRunning(kSyncDaemon);
        facts.status = view::readPublishedStatus();
        facts.now = std::time(nullptr);
        return facts;
    });
}

std::size_t countInternal(const Facts& facts)
{
    return static_cast<std::size_t>(
        std::ranges::count(facts.devices, Device::Kind::kInternalDisk, &Device::kind));
}

// ---- At a glance ------------------------------------------------------------------------------

Html tile(Literal label, const std::string& figure, std::string_view remark)
{
    Html out;
    out << "<div><dt>" << label << "</dt><dd>" << Text{figure};
    if (!remark.empty()) {
        out << R"( <span class="quiet">)" << Text{remark} << "</span>";
    }
    out << "</dd></div>\n";
    return out;
}

Html tiles(const Facts& facts)
{
    const std::vector<ShareRow>& shares = facts.status.shares;
    const auto recent = std::ranges::count_if(shares, [&facts](const ShareRow& share) {
        return view::judgeBackup(share, view::dayOf(facts.now)) == BackupLevel::kRecent;
    });
    return Html() << R"(<dl class="tiles">)"
                  << tile("Space used", view::formatKibibytes(view::totalUsed(shares)),
                          "in " + view::formatCount(shares.size(), "share", "shares"))
                  << tile("Recent backups", std::to_string(recent),
                          "of " + std::to_string(shares.size()))
                  << tile("Internal disks", std::to_string(countInternal(facts)), "")
                  << tile("USB devices",
                          std::to_string(facts.devices.size() - countInternal(facts)), "")
                  << "</dl>\n";
}

// ---- Shares -----------------------------------------------------------------------------------

/// A bar beside a text that says the same.
Html bar(std::uint64_t part, std::uint64_t whole)
{
    constexpr std::uint64_t kSteps = 1000;
    // What is there at all can be seen.
    const std::uint64_t smallest = (part > 0) ? 5 : 0;
    const std::uint64_t steps = std::max((whole > 0) ? part * kSteps / whole : 0, smallest);
    return Html()
           << R"(<svg class="bar" viewBox="0 0 1000 10" preserveAspectRatio="none" aria-hidden="true">)"
           << R"(<rect width=")" << Text{std::to_string(steps)} << R"(" height="10"/></svg>)";
}

Html space(const ShareRow& share, std::uint64_t total)
{
    if (!guard::isMeasurable(share.name)) {
        return Html()
               << R"(<p class="space"><strong>Rename this share</strong> <span class="quiet">It is not )"
               << R"(measured, as its name could run in a shell</span></p>)";
    }
    if (!share.used) {
        return Html() << R"(<p class="space"><span class="quiet">Space not known</span></p>)";
    }
    const std::uint64_t used = share.used->kibibytes();
    return Html() << R"(<p class="space">)" << bar(used, total) << "<span><b>"
                  << Text{view::formatSpace(*share.used)} << R"(</b> <span class="quiet">)"
                  << Text{view::formatPart(used, total)} << "</span></span></p>";
}

Html backupBadge(BackupLevel level)
{
    switch (level) {
    case BackupLevel::kRecent:
        return badge("recent", "&#10003;", "Recent");
    case BackupLevel::kAgeing:
        return badge("ageing", "!", "Getting old");
    case BackupLevel::kOld:
        return badge("old", "&#10005;", "Old");
    case BackupLevel::kNone:
        break;
    }
    return badge("none", "&ndash;", "None");
}

Html backup(const ShareRow& share, std::chrono::sys_days today)
{
    Html out;
    out << R"(<p class="backup">)" << backupBadge(view::judgeBackup(share, today)) << " <span>";
    if (share.backupDay) {
        out << R"(<span class="sr">Last backup </span><time datetime=")"
            << Text{view::formatIsoDate(*share.backupDay)} << R"(">)"
            << Text{view::formatAge(*share.backupDay, today)} << R"(</time> <span class="quiet">)"
            << Text{view::formatDate(*share.backupDay)};
        if (share.backupState) {
            out << ", state " << Text{std::to_string(*share.backupState)};
        }
        out << "</span>";
    } else {
        out << R"(<span class="quiet">no backup is known</span>)";
    }
    out << "</span></p>";
    return out;
}

Html shareList(const Facts& facts)
{
    const std::uint64_t total = view::totalUsed(facts.status.shares);
    Html out;
    out << R"(<ul class="shares">)";
    for (const ShareRow& share : facts.status.shares) {
        out << "\n<li><h3><bdi>" << Text{share.name} << "</bdi></h3>" << space(share, total)
            << backup(share, view::dayOf(facts.now)) << "</li>";
    }
    out << "\n</ul>\n";
    return out;
}

Html collectionTime(const Facts& facts)
{
    const PublishedStatus& status = facts.status;
    Html out;
    out << R"(<p class="quiet">)";
    if (status.published != 0) {
        out << "Measured " << Text{view::formatElapsed(status.published, facts.now)} << " ("
            << Text{view::formatTime(status.published)} << "). ";
    }
    if (status.isCollecting) {
        out << R"(<strong data-collecting>A collection is running now.</strong>)";
    } else if (status.isInterrupted) {
        out << "The last collection was interrupted.";
    } else {
        out << "No collection is running.";
    }
    if (!status.shares.empty()) {
        out << " A bar shows the share's part of all the space used.";
    }
    out << "</p>\n";
    return out;
}

/// What stands where there is no list.
Literal reasonForNone(const PublishedStatus& status)
{
    using enum PublishedStatus::Result;
    switch (status.result) {
    case kNone:
        return "<p>No share has been measured yet.</p>";
    case kDamaged:
        return "<p>The share status is damaged. The next collection replaces it.</p>";
    case kNoList:
        return "<p>The last collection could not get the list of shares.</p>";
    case kComplete:
        break;
    }
    return "<p>There are no internal shares.</p>";
}

Html shareSection(const Facts& facts)
{
    Html out;
    out << R"(<section class="card" aria-labelledby="shares">
<h2 id="shares">Shares</h2>
)" << collectionTime(facts);
    out << (facts.status.shares.empty() ? Html() << reasonForNone(facts.status) : shareList(facts));
    out << "</section>\n";
    return out;
}

// ---- Drives and printers ----------------------------------------------------------------------

Html deviceIcon(Device::Kind kind)
{
    Html out;
    out << R"(<svg class="icon" viewBox="0 0 24 24" aria-hidden="true">)";
    if (kind == Device::Kind::kInternalDisk) {
        out << R"(<rect x="4" y="3" width="16" height="18" rx="2"/><circle cx="12" cy="10" r="4"/>)"
            << R"(<path d="M12 10l4 7"/>)";
    } else if (kind == Device::Kind::kUsbDisk) {
        out << R"(<rect x="7" y="9" width="10" height="12" rx="2"/><path d="M9 9V3h6v6M11 6h2"/>)";
    } else {
        out << R"(<path d="M7 9V3h10v6M7 17H4V9h16v8h-3"/><rect x="7" y="14" width="10" height="7"/>)";
    }
    out << "</svg>";
    return out;
}

Literal kindLabel(Device::Kind kind)
{
    switch (kind) {
    case Device::Kind::kInternalDisk:
        return "Internal disk";
    case Device::Kind::kUsbDisk:
        return "USB disk";
    case Device::Kind::kUsbPrinter:
        break;
    }
    return "USB printer";
}

std::string headingOf(const Device& device)
{
    if (device.kind == Device::Kind::kUsbPrinter && !device.name.empty()) {
        return device.name;
    }
    const bool hasBoth = !device.vendor.empty() && !device.model.empty();
    std::string heading = device.vendor;
    heading.append(hasBoth ? " " : "").append(device.model);
    return heading;
}

Html deviceItem(const Device& device)
{
    Html out;
    out << "\n<li>" << deviceIcon(device.kind) << "<div><h3><bdi>" << Text{headingOf(device)}
        << R"(</bdi></h3><p class="quiet">)" << kindLabel(device.kind);
    if (device.kind != Device::Kind::kUsbPrinter && !device.name.empty()) {
        out << " <bdi>" << Text{device.name} << "</bdi>";
    } else if (device.kind == Device::Kind::kUsbPrinter && !device.vendor.empty()) {
        out << " by <bdi>" << Text{device.vendor} << "</bdi>";
    }
    if (!device.serial.empty()) {
        out << R"(<br>Serial number <bdi>)" << Text{device.serial} << "</bdi>";
    }
    out << "</p></div>";
    if (!device.capacity.empty()) {
        out << R"(<p class="capacity"><bdi>)" << Text{device.capacity} << "</bdi> GB</p>";
    }
    out << "</li>";
    return out;
}

Html deviceSection(const Facts& facts)
{
    Html out;
    out << R"(<section class="card" aria-labelledby="devices">
<h2 id="devices">Drives and printers</h2>
<p class="drive-count" data-drives=")"
        << Text{std::to_string(countInternal(facts))} << R"(" hidden></p>
)";
    if (!facts.areDevicesKnown) {
        out << "<p>The appliance does not tell what is attached.</p>";
    } else if (facts.devices.empty()) {
        out << "<p>Nothing is attached.</p>";
    }
    out << R"(<ul class="devices">)";
    for (const Device& device : facts.devices) {
        out << deviceItem(device);
    }
    out << "\n</ul>\n</section>\n";
    return out;
}

// ---- Network and system -----------------------------------------------------------------------

std::string wordProtocol(const std::string& protocol)
{
    return (protocol == "dhcp_client") ? "automatic (DHCP)" : protocol;
}

Html networkSection(const Facts& facts)
{
    return Html() << R"(<section class="card" aria-labelledby="network">
<h2 id="network">Network</h2>
<dl class="facts">
)" << fact("Address", facts.address)
                  << fact("Network mask", facts.netmask) << fact("Gateway", facts.gateway)
                  << fact("Hardware address", facts.hardwareAddress)
                  << fact("Configuration", wordProtocol(facts.protocol)) << "</dl>\n</section>\n";
}

Html systemSection(const Facts& facts)
{
    return Html() << R"(<section class="card" aria-labelledby="system">
<h2 id="system">System</h2>
<dl class="facts">
)" << fact("Build", facts.build)
                  << fact("Remote sync", facts.isSyncOn ? "on" : "off") << "</dl>\n</section>\n";
}

Html setupHint()
{
    return notice(Mood::kNeutral, Html()
                                      << R"(<p>This appliance has not been set up yet. <a href=")"
                                      << kProgramUrl << R"(/setup">Set it up now</a></p>)");
}

} // namespace

Page makeOverview(Visit& visit)
{
    const Facts facts = gather(visit.script);
    Page page;
    page.title = "Overview";
    const bool isHinted = !facts.isSetUp && visit.visitor.isAdministrator;
    page.body << (isHinted ? setupHint() : Html()) << tiles(facts) << shareSection(facts)
              << R"(<div class="columns">)" << deviceSection(facts) << R"(<div>)"
              << networkSection(facts) << systemSection(facts) << "</div></div>\n";
    return page;
}

} // namespace page
