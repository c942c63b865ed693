// SPDX-License-Identifier: MIT
#include "page/overview_devices.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "text/translation.h"

namespace {

using page::Device;

/// The card with so many internal disks, and this in the place of the list.
std::string card(int disks, const std::string& list)
{
    return "<section class=\"card\" aria-labelledby=\"devices\">\n"
           "<h2 id=\"devices\">Drives and printers</h2>\n"
           "<p class=\"drive-count\" data-drives=\"" +
           std::to_string(disks) +
           "\" data-difference=\"Internal drives that the appliance counts: {1}; that it reports: "
           "{2}.\" hidden></p>\n" +
           list + "</section>\n";
}

TEST(DevicesCard, saysWhenThereIsNothing)
{
    EXPECT_EQ(page::devicesCard(std::nullopt).text(),
              card(0, "<p>The appliance does not say what is attached.</p>\n"));
    EXPECT_EQ(page::devicesCard(std::vector<Device>()).text(),
              card(0, "<p>Nothing is attached.</p>\n"));
}

/// A text without the devices' pictures.
std::string withoutPictures(std::string text)
{
    for (std::size_t start = text.find("<svg"); start != std::string::npos;
         start = text.find("<svg")) {
        text.erase(start, text.find("</svg>") + 6 - start);
    }
    return text;
}

TEST(DevicesCard, showsWhatIsKnownOfEach)
{
    using enum Device::Kind;
    const std::vector<Device> devices = {
        {.kind = kInternalDisk,
         .name = "sda",
         .vendor = "Maker",
         .model = "M & more",
         .serial = "S1",
         .capacity = "500.10"},
        {.kind = kUsbDisk,
         .name = "",
         .vendor = "Maker",
         .model = "",
         .serial = "",
         .capacity = ""},
        {.kind = kUsbPrinter,
         .name = "Laser",
         .vendor = "Maker",
         .model = "",
         .serial = "S2",
         .capacity = ""},
    };
    EXPECT_EQ(withoutPictures(page::devicesCard(devices).text()),
              card(1, "<ul class=\"devices\">\n"
                      "<li><div><h3><bdi>Maker M &amp; more</bdi></h3><p class=\"quiet\">Internal "
                      "disk <bdi>sda</bdi><br>Serial number <bdi>S1</bdi></p></div>"
                      "<p class=\"capacity\"><bdi>500.10</bdi> GB</p></li>\n"
                      "<li><div><h3><bdi>Maker</bdi></h3><p class=\"quiet\">USB disk</p></div>"
                      "</li>\n"
                      "<li><div><h3><bdi>Laser</bdi></h3><p class=\"quiet\">USB printer by "
                      "<bdi>Maker</bdi><br>Serial number <bdi>S2</bdi></p></div></li>\n"
                      "</ul>\n"));
}

TEST(DevicesCard, capacityHasTheDecimalSignOfTheLanguageIfItIsANumber)
{
    const auto capacityOf = [](const std::string& reported) {
        const Device disk = {.kind = Device::Kind::kInternalDisk,
                             .name = "",
                             .vendor = "",
                             .model = "",
                             .serial = "",
                             .capacity = reported};
        const std::string card = page::devicesCard(std::vector{disk}).text();
        const std::string mark = "<p class=\"capacity\"><bdi>";
        const std::size_t start = card.find(mark) + mark.size();
        return card.substr(start, card.find("</bdi>", start) - start);
    };
    text::speak(*core::findLanguage("ge"));
    const std::string number = capacityOf("500.10");
    std::string others;
    for (const char* reported : {"500", "5x1", ".5", "5.", "1.2.3", "5.1 x", "about 5.1"}) {
        others += capacityOf(reported) + "\n";
    }
    text::speak(*core::findLanguage("en"));
    EXPECT_EQ(number, "500,10");
    EXPECT_EQ(others, "500\n5x1\n.5\n5.\n1.2.3\n5.1 x\nabout 5.1\n");
    EXPECT_EQ(capacityOf("500.10"), "500.10");
}

} // namespace
