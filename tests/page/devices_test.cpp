// SPDX-License-Identifier: MIT
#include "page/devices.h"

#include <array>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using page::Device;
using Kind = page::Device::Kind;

template <std::size_t Size> void put(char (&field)[Size], const std::string& text)
{
    std::memcpy(field, text.data(), std::min(text.size(), Size));
}

DriveInfo disk(int isUsb, const std::string& serial, const std::string& name)
{
    DriveInfo record = {};
    put(record.vendor, "Maker");
    put(record.model, "Model");
    put(record.modelInfo, serial);
    put(record.devName, name);
    put(record.capacity, "500.10");
    record.isUsb = isUsb;
    return record;
}

DriveInfo printer(const std::string& serial, const std::string& name)
{
    DriveInfo record = {};
    put(record.vendor, "Maker");
    put(record.modelInfo, serial);
    put(record.devName, name);
    record.isUsb = 1;
    return record;
}

/// The names and kinds of all, in order.
std::vector<std::pair<Kind, std::string>> namesOf(const std::vector<DriveInfo>& records)
{
    std::vector<std::pair<Kind, std::string>> names;
    for (const Device& device : page::readDevices(records)) {
        names.emplace_back(device.kind, device.name);
    }
    return names;
}

using Names = std::vector<std::pair<Kind, std::string>>;

TEST(Devices, areReadFieldByField)
{
    const std::vector<Device> devices = page::readDevices(std::array{disk(0, "S1", "sda")});
    ASSERT_EQ(devices.size(), 1U);
    EXPECT_EQ(devices[0].kind, Kind::kInternalDisk);
    EXPECT_EQ(devices[0].name, "sda");
    EXPECT_EQ(devices[0].vendor, "Maker");
    EXPECT_EQ(devices[0].model, "Model");
    EXPECT_EQ(devices[0].serial, "S1");
    EXPECT_EQ(devices[0].capacity, "500.10");
}

TEST(Devices, unusedRecordsAreLeftOut)
{
    EXPECT_EQ(namesOf({DriveInfo{}, disk(0, "", "sda"), DriveInfo{}}),
              (Names{{Kind::kInternalDisk, "sda"}}));
}

TEST(Devices, fullFieldsEndWithTheField)
{
    DriveInfo record = disk(0, std::string(40, 'S'), std::string(40, 'n'));
    put(record.capacity, std::string(40, '1'));
    const std::vector<Device> devices = page::readDevices(std::array{record});
    EXPECT_EQ(devices[0].serial, std::string(40, 'S'));
    EXPECT_EQ(devices[0].name, std::string(40, 'n'));
    EXPECT_EQ(devices[0].capacity, std::string(40, '1'));
}

TEST(Devices, usbDeviceWithoutCapacityIsAPrinter)
{
    EXPECT_EQ(namesOf({disk(1, "A", "sdc"), printer("B", "Laser")}),
              (Names{{Kind::kUsbDisk, "sdc"}, {Kind::kUsbPrinter, "Laser"}}));
}

TEST(Devices, nameOfAPrinterGoesBackToItFromADiskOfItsSerialNumber)
{
    EXPECT_EQ(
        namesOf({disk(0, "A", "sda"), disk(1, "B", "Laser"), printer("B", "")}),
        (Names{{Kind::kInternalDisk, "sda"}, {Kind::kUsbDisk, ""}, {Kind::kUsbPrinter, "Laser"}}));
}

TEST(Devices, namesStayWhereNothingWasMoved)
{
    EXPECT_EQ(namesOf({disk(1, "B", "sdc"), printer("B", "Laser")}),
              (Names{{Kind::kUsbDisk, "sdc"}, {Kind::kUsbPrinter, "Laser"}}));
    EXPECT_EQ(namesOf({disk(1, "", "sdc"), printer("", "")}),
              (Names{{Kind::kUsbDisk, "sdc"}, {Kind::kUsbPrinter, ""}}));
    EXPECT_EQ(namesOf({disk(1, "A", "sdc"), printer("B", "")}),
              (Names{{Kind::kUsbDisk, "sdc"}, {Kind::kUsbPrinter, ""}}));
}

} // namespace
