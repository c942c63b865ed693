// SPDX-License-Identifier: MIT
#include "page/devices.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

namespace page {
namespace {

/// A field's text, which lacks its terminator where it is full.
template <class Field> std::string textOf(const Field& field)
{
    return {std::begin(field), ::strnlen(std::begin(field), std::size(field))};
}

bool isUsed(const DriveInfo& record)
{
    return !textOf(record.vendor).empty() || !textOf(record.model).empty() ||
           !textOf(record.modelInfo).empty() || !textOf(record.devName).empty() ||
           !textOf(record.capacity).empty();
}

Device::Kind kindOf(const DriveInfo& record)
{
    using enum Device::Kind;
    if (record.isUsb == 0) {
        return kInternalDisk;
    }
    return (record.capacity[0] == '\0') ? kUsbPrinter : kUsbDisk;
}

Device readDevice(const DriveInfo& record)
{
    return {
        .kind = kindOf(record),
        .name = textOf(record.devName),
        .vendor = textOf(record.vendor),
        .model = textOf(record.model),
        .serial = textOf(record.modelInfo),
        .capacity = textOf(record.capacity),
    };
}

/// Gives a printer the name that stands with an earlier device of the same serial number.
void takeNameBack(Device& printer, std::span<Device> earlier)
{
    if (printer.kind != Device::Kind::kUsbPrinter || !printer.name.empty() ||
        printer.serial.empty()) {
        return;
    }
    const auto found = std::ranges::find(earlier, printer.serial, &Device::serial);
    if (found != earlier.end()) {
        printer.name = std::exchange(found->name, "");
    }
}

} // namespace

std::vector<Device> readDevices(std::span<const DriveInfo> records)
{
    std::vector<Device> devices;
    for (const DriveInfo& record : records) {
        if (isUsed(record)) {
            Device device = readDevice(record);
            takeNameBack(device, devices);
            devices.push_back(std::move(device));
        }
    }
    return devices;
}

} // namespace page
