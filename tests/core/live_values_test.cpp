// SPDX-License-Identifier: MIT
#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>

#include "tests/support/root.h"
#include "vokcontrol.h"

namespace {

using Lines = std::vector<std::string>;

class LiveValues : public root::Test {
  protected:
    const std::string output = root::workFile("getsetvar");

    /// Makes the tool print a text, and compares the value, the calls and standard error.
    void expectValue(int kind, const std::string& line, const std::string& printed,
                     const std::string& value)
    {
        watch::restart();
        root::writeFile("/stubs/printed", printed);
        root::stub("ifconfig", "cat /stubs/printed");
        root::stub("route", "[ \"$1\" = -n ] && cat /stubs/printed");
        testing::internal::CaptureStderr();
        EXPECT_EQ(getSystemVar("ignored", kind), value) << printed;
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "getSystemVar -- ptr:" + value + "---\n");
        EXPECT_EQ(watch::calls(), (Lines{line + output, "sudo rm -f " + output}));
        EXPECT_FALSE(root::exists(output));
    }

    void expectAddress(const std::string& printed, const std::string& value)
    {
        expectValue(1, "ifconfig | grep addr: > ", printed, value);
    }
    void expectHardwareAddress(const std::string& printed, const std::string& value)
    {
        expectValue(2, "ifconfig | grep HWaddr > ", printed, value);
    }
    void expectGateway(const std::string& printed, const std::string& value)
    {
        expectValue(4, "route -n | grep '0.0.0.0' | grep 'UG' > ", printed, value);
    }
    void expectMask(const std::string& printed, const std::string& value)
    {
        expectValue(5, "ifconfig | grep Mask: > ", printed, value);
    }
};

const std::string kIfconfig = "eth0      Link encap:Ethernet  HWaddr 00:1A:2B:3C:4D:5E  \n"
                              "          inet addr:192.168.1.20  Bcast:192.168.1.255  "
                              "Mask:255.255.255.0\n"
                              "lo        inet addr:127.0.0.1  Mask:255.0.0.0\n";

TEST_F(LiveValues, addressIsAfterAddr)
{
    expectAddress(kIfconfig, "192.168.1.20");
    expectAddress("addr:10.0.0.1", "10.0.0.1");
    expectAddress("addr:ABCDEF.9G", "ABCDEF.9");
    expectAddress("addr:fe80::1\n", "");
    expectAddress("addr:10.0.0.1:8080\n", "10.0.0.1");
    expectAddress("addr:\n", "");
    expectAddress("addr:", "");
}

TEST_F(LiveValues, hardwareAddressIsAfterHwaddrAndABlank)
{
    expectHardwareAddress(kIfconfig, "00:1A:2B:3C:4D:5E");
    expectHardwareAddress("HWaddr 0a:1b", "0");
    expectHardwareAddress("HWaddr 12.5", "12");
    expectHardwareAddress("HWaddr\n", "");
    expectHardwareAddress("HWaddr", "");
}

TEST_F(LiveValues, maskIsAfterMask)
{
    expectMask(kIfconfig, "255.255.255.0");
    expectMask("Mask:255.0.0.0:24\n", "255.0.0.0");
    expectMask("Mask:", "");
    expectMask("Masks Mask:1.2.3.4", "");
}

TEST_F(LiveValues, textThatIsAlmostAMarkIsSkipped)
{
    expectAddress("eth0 HWaddr 00:1A inet addr:10.0.0.1\n", "10.0.0.1");
    expectHardwareAddress("HWadd 12345 HWaddr 0A:1B\n", "0A:1B");
    expectMask("Mas 12.5 Mask:1.2.3.4\n", "1.2.3.4");
}

TEST_F(LiveValues, gatewayIsTheSecondColumn)
{
    expectGateway("0.0.0.0         192.168.1.1     0.0.0.0         UG    0      0        0 eth0\n",
                  "192.168.1.1");
    expectGateway("0.0.0.0 10.0.0.1 UG\n", "10.0.0.1");
    expectGateway("0.0.0.0 UG 7AFG\n", "7AF");
    expectGateway("0.0.0.0 10.0.0.1:53 UG\n", "10.0.0.1");
    expectGateway("0.0.0.0 UG none\n", "");
}

TEST_F(LiveValues, gatewayBeginsAtTheNinthCharacterOrLater)
{
    expectGateway("0.0.0.07 UG\n", "");
    expectGateway("0.0.0.0 8 UG\n", "8");
    expectGateway("0.0.0.0110.0.0.1 UG\n", "10.0.0.1");
    expectGateway("0.0.0.0 UG", "");
    expectGateway("0.0.0.0UG\n", "");
}

TEST_F(LiveValues, gatewayMayBeginWithEachDigit)
{
    for (const char digit : std::string("0123456789")) {
        const std::string gateway = std::string(1, digit) + ".1.2.3";
        expectGateway("0.0.0.0 " + gateway + " UG\n", gateway);
    }
}

TEST_F(LiveValues, onlyTheFirstLineCounts)
{
    expectAddress("addr:none\naddr:1.2.3.4\n", "");
}

TEST_F(LiveValues, emptyOutputIsAnEmptyValue)
{
    expectAddress("", "");
    expectHardwareAddress("eth0\n", "");
    expectGateway("Kernel IP routing table\n", "");
    expectMask("", "");
}

TEST_F(LiveValues, longLineIsCutAndNeverReadPastItsEnd)
{
    expectAddress("addr:" + std::string(600, '1') + "\n", std::string(506, '1'));
    expectAddress(std::string(506, ' ') + "addr:12\n", "");
    expectHardwareAddress(std::string(504, ' ') + "HWaddr 12\n", "");
}

TEST_F(LiveValues, markCutByTheEndOfALongLineIsNotFound)
{
    expectAddress(std::string(507, '1') + "addr:2\n", "");
    expectHardwareAddress(std::string(505, '1') + "HWaddr 12\n", "");
    expectHardwareAddress(std::string(506, '1') + "HWaddr 12\n", "");
    expectMask(std::string(508, '1') + "Mask:2\n", "");
}

TEST_F(LiveValues, valueIsEmptyIfTheToolCannotRun)
{
    expectAddress(kIfconfig, "192.168.1.20");
    watch::restart();
    watch::answer("ifconfig", -1, EAGAIN);
    EXPECT_STREQ(getSystemVar("", 1), "");
    EXPECT_EQ(watch::calls(), (Lines{"ifconfig | grep addr: > " + output, "sudo rm -f " + output}));
}

TEST_F(LiveValues, olderOutputOfAToolThatCannotRunIsNotRead)
{
    root::writeFile(output, "addr:1.2.3.4\n");
    watch::answer("ifconfig", -1, EAGAIN);
    EXPECT_STREQ(getSystemVar("", 1), "");
    EXPECT_FALSE(root::exists(output));
}

TEST_F(LiveValues, outputOfAToolThatFailedCounts)
{
    root::stub("ifconfig", "echo addr:1.2.3.4");
    root::stub("grep", "cat; exit 3");
    EXPECT_STREQ(getSystemVar("", 1), "1.2.3.4");
    EXPECT_EQ(watch::calls(), (Lines{"ifconfig | grep addr: > " + output, "sudo rm -f " + output}));
}

TEST_F(LiveValues, resultIsPrintedBeforeItsFileIsRemoved)
{
    root::stub("ifconfig", "echo addr:1.2.3.4");
    root::stub("rm", "echo removing >&2; /usr/bin/rm \"$@\"");
    testing::internal::CaptureStderr();
    EXPECT_STREQ(getSystemVar("", 1), "1.2.3.4");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "getSystemVar -- ptr:1.2.3.4---\nremoving\n");
    EXPECT_FALSE(root::exists(output));
}

TEST_F(LiveValues, missingOutputIsAnEmptyValue)
{
    root::stub("ifconfig", "echo addr:1.2.3.4");
    watch::after("ifconfig", [this] { std::filesystem::remove(output); });
    EXPECT_STREQ(getSystemVar("", 1), "");
}

TEST_F(LiveValues, protocolAndUnknownKindsRunNothing)
{
    testing::internal::CaptureStderr();
    EXPECT_STREQ(getSystemVar("", 3), "dhcp_client");
    for (const int kind : {-1, 0, 6, 1000}) {
        EXPECT_STREQ(getSystemVar("", kind), "") << kind;
    }
    EXPECT_STREQ(getSystemVar(nullptr, 3), "dhcp_client");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(watch::calls(), Lines{});
}

} // namespace
