// SPDX-License-Identifier: MIT
#include "page/overview_devices.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "page/phrase.h"
#include "text/translation.h"

namespace page {
namespace {

using text::tr;

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

const char* kindLabel(Device::Kind kind)
{
    switch (kind) {
    case Device::Kind::kInternalDisk:
        return tr("Internal disk");
    case Device::Kind::kUsbDisk:
        return tr("USB disk");
    case Device::Kind::kUsbPrinter:
        break;
    }
    return tr("USB printer");
}

/// A printer with who makes it, a disk with its name.
Html kindOf(const Device& device)
{
    if (device.kind == Device::Kind::kUsbPrinter && !device.vendor.empty()) {
        return phrase(tr("USB printer by {}"), {apart(device.vendor)});
    }
    Html out;
    out << Text{kindLabel(device.kind)};
    if (device.kind != Device::Kind::kUsbPrinter && !device.name.empty()) {
        out << " " << apart(device.name);
    }
    return out;
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

/// A capacity with the language's decimal sign. What is no decimal number stays as it is reported.
std::string localized(std::string capacity)
{
    constexpr std::string_view kDigits = "0123456789";
    const std::size_t point = capacity.find_first_not_of(kDigits);
    const bool isNumber = point != capacity.npos && point > 0 && capacity[point] == '.' &&
                          point + 1 < capacity.size() &&
                          capacity.find_first_not_of(kDigits, point + 1) == capacity.npos;
    if (isNumber) {
        capacity.replace(point, 1, text::trc("decimal sign", "."));
    }
    return capacity;
}

Html deviceItem(const Device& device)
{
    Html out;
    out << "\n<li>" << deviceIcon(device.kind) << "<div><h3>" << apart(headingOf(device))
        << R"(</h3><p class="quiet">)" << kindOf(device);
    if (!device.serial.empty()) {
        out << "<br>" << phrase(tr("Serial number {}"), {apart(device.serial)});
    }
    out << "</p></div>";
    if (!device.capacity.empty()) {
        out << R"(<p class="capacity">)" << phrase(tr("{} GB"), {apart(localized(device.capacity))})
            << "</p>";
    }
    out << "</li>";
    return out;
}

std::size_t countInternal(const std::vector<Device>& devices)
{
    return static_cast<std::size_t>(
        std::ranges::count(devices, Device::Kind::kInternalDisk, &Device::kind));
}

Html deviceList(const std::vector<Device>& devices)
{
    if (devices.empty()) {
        return Html() << "<p>" << Text{tr("Nothing is attached.")} << "</p>\n";
    }
    Html out;
    out << R"(<ul class="devices">)";
    for (const Device& device : devices) {
        out << deviceItem(device);
    }
    out << "\n</ul>\n";
    return out;
}

} // namespace

Html devicesCard(const std::optional<std::vector<Device>>& devices)
{
    const Html list = devices ? deviceList(*devices)
                              : Html() << "<p>"
                                       << Text{tr("The appliance does not say what is attached.")}
                                       << "</p>\n";
    return Html() << R"(<section class="card" aria-labelledby="devices">
<h2 id="devices">)"
                  << Text{tr("Drives and printers")} << R"(</h2>
<p class="drive-count" data-drives=")"
                  << Text{std::to_string(devices ? countInternal(*devices) : 0)}
                  << R"(" data-difference=")"
                  << Text{tr(
                         "Internal drives that the appliance counts: {1}; that it reports: {2}.")}
                  << R"(" hidden></p>
)" << list << "</section>\n";
}

} // namespace page
