// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/root.h"
#include "vokcontrol.h"

namespace {

using Lines = std::vector<std::string>;
using root::join;

/// All of a field, without the zeros at its end.
std::string text(const char (&field)[40])
{
    const std::string all(field, sizeof field);
    return all.substr(0, all.find_last_not_of('\0') + 1);
}

/// A record as a text.
std::string described(const DriveInfo& record)
{
    return text(record.vendor) + "|" + text(record.model) + "|" + text(record.modelInfo) + "|" +
           text(record.devName) + "|" + text(record.capacity) + "|" + std::to_string(record.index) +
           "|" + std::to_string(record.isUsb);
}

const std::string kEmpty = "|||||0|0";
const std::string kEmptyUsb = "|||||0|1";

std::string tag(const std::string& name, const std::string& value)
{
    return "    <" + name + ">" + value + "</" + name + ">\n";
}

std::string block(const std::string& name, const std::string& values)
{
    return "  <" + name + ">\n" + values + "  </" + name + ">\n";
}

std::string internalDisk(const std::string& values)
{
    return block("HDDInfo", values);
}

std::string usbDisk(const std::string& values)
{
    return block("usbHdd", values);
}

std::string printer(const std::string& values)
{
    return block("printerInfo", values);
}

/// The message for a USB device's opening line.
std::string usb(int record, int isUsb = 1)
{
    return "found usb device:" + std::to_string(isUsb) + " index: " + std::to_string(record);
}

std::string index(int value, int record)
{
    return "found index:" + std::to_string(value) + " -- index:" + std::to_string(record);
}

std::string modelInfo(const std::string& value, const std::string& serial = "")
{
    return "found modelInfo:" + value + " -- PrinterSn:" + serial;
}

/// The messages for a printer's name that goes to the record with its serial number.
Lines named(int record, const std::string& oldName, const std::string& name,
            const std::string& serial)
{
    return {"found Usb Printer at index: " + std::to_string(record) + " -- :" + oldName,
            "found printerName_n:" + name + " -- PrinterSn: " + serial};
}

std::string namedHere(const std::string& name)
{
    return "found printerName_index:" + name;
}

const std::string kGood = "iRet = 0 ";
const std::string kTooMany = "iRet = -1 ";

std::string comments(const Lines& messages)
{
    std::string all;
    for (const std::string& message : messages) {
        all += "//<!-- getDriveInfos() " + message + "-->\n";
    }
    return all;
}

class DriveInfos : public root::Test {
  protected:
    const std::string output = root::workFile("getDriveInfos");
    const std::string fetch =
        "sudo /usr/bin/php /etc/inc/api_system.php tovGetSystemStatus " + output;
    const std::string removal = "sudo rm -f " + output;

    void SetUp() override
    {
        root::Test::SetUp();
        clearRecords();
    }

    /// The caller's four records and the memory after them.
    std::array<DriveInfo, 4 + 6> records;

    void clearRecords()
    {
        std::memset(records.data(), 0, 4 * sizeof(DriveInfo));
        std::memset(records.data() + 4, kBehind, 6 * sizeof(DriveInfo));
    }

    static void stubReport(const std::string& report)
    {
        root::writeFile("/stubs/report", report);
        root::stub("php", "cat /stubs/report >\"$3\"");
    }

    /// Calls the function, and compares what it returns, prints and runs.
    void expectCall(int result, const Lines& messages, const Lines& calls)
    {
        testing::internal::CaptureStdout();
        EXPECT_EQ(getDriveInfos(records.data()), result);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), comments(messages));
        EXPECT_EQ(watch::calls(), calls);
    }

    /// @param expected  the first records; the others stay empty
    void expectRecords(Lines expected)
    {
        expected.resize(4, kEmpty);
        Lines actual;
        std::transform(records.begin(), records.begin() + 4, std::back_inserter(actual), described);
        EXPECT_EQ(actual, expected);
        const auto* behind = reinterpret_cast<const unsigned char*>(records.data() + 4);
        EXPECT_EQ(std::count(behind, behind + 6 * sizeof(DriveInfo), kBehind),
                  static_cast<std::ptrdiff_t>(6 * sizeof(DriveInfo)));
    }

    /// Reads a report into empty records.
    void expectReport(const std::string& report, const Lines& messages, const Lines& expected)
    {
        SCOPED_TRACE(report);
        watch::restart();
        clearRecords();
        stubReport(report);
        expectCall(0, messages, {fetch, removal});
        expectRecords(expected);
        EXPECT_FALSE(root::exists(output));
    }

  private:
    static constexpr unsigned char kBehind = 0xA5;
};

TEST(DriveInfo, fieldsAreDirectlyAfterEachOther)
{
    EXPECT_EQ(offsetof(DriveInfo, vendor), 0U);
    EXPECT_EQ(offsetof(DriveInfo, model), 40U);
    EXPECT_EQ(offsetof(DriveInfo, modelInfo), 80U);
    EXPECT_EQ(offsetof(DriveInfo, devName), 120U);
    EXPECT_EQ(offsetof(DriveInfo, capacity), 160U);
    EXPECT_EQ(offsetof(DriveInfo, index), 200U);
    EXPECT_EQ(offsetof(DriveInfo, isUsb), 204U);
    EXPECT_EQ(sizeof(DriveInfo), 208U);
}

// ---- Blocks -------------------------------------------------------------------------------------

TEST_F(DriveInfos, withoutDevicesNothingIsFilled)
{
    expectReport("", {kGood}, {});
    expectReport("<status>\n  <fan>1200</fan>\n</status>\n", {kGood}, {});
}

TEST_F(DriveInfos, internalDiskFillsARecord)
{
    expectReport(internalDisk(tag("hddIndex", "3") + tag("manufacturerVid", "Vendor") +
                              tag("manufacturerPid", "Model") + tag("modelInfo", "Serial") +
                              tag("modelCap", "931.5123") + tag("modelDevName", "sda")),
                 {index(3, 0), "found manufacturerVid:Vendor", "found model:Model",
                  modelInfo("Serial"), "found modelCap:931.51", "found modelDevName:sda", kGood},
                 {std::string("Vendor|Model|Serial|sda|931.51") + '\0' + "3|3|0"});
}

TEST_F(DriveInfos, usbDiskFillsARecord)
{
    expectReport(usbDisk(tag("hddIndex", "7") + tag("manufacturerVid", "Vendor") +
                         tag("manufacturerPid", "Model") + tag("modelInfo", "Serial") +
                         tag("modelCap", "16") + tag("modelDevName", "sdc")),
                 {usb(0), index(7, 0), "found manufacturerVid:Vendor", "found model:Model",
                  modelInfo("Serial"), "found modelCap:16", "found modelDevName:sdc", kGood},
                 {"Vendor|Model|Serial|sdc|16|7|1"});
}

TEST_F(DriveInfos, printerFillsARecord)
{
    expectReport(printer(tag("printerManufacture", "Maker") + tag("manufacturerPid", "Model") +
                         tag("modelInfo", "Serial") + tag("printerName", "Inky")),
                 join({{usb(0), "found printerManufacture:Maker", "found model:Model",
                        modelInfo("Serial", "Serial")},
                       named(0, "", "Inky", "Serial"),
                       {kGood}}),
                 {"Maker|Model|Serial|Inky||0|1"});
}

TEST_F(DriveInfos, devicesFillTheRecordsInTheirOrder)
{
    expectReport(internalDisk(tag("modelDevName", "sda")) + usbDisk(tag("modelDevName", "sdc")),
                 {"found modelDevName:sda", usb(1), "found modelDevName:sdc", kGood},
                 {"|||sda||0|0", "|||sdc||0|1"});
    expectReport(internalDisk(tag("hddIndex", "1")) + usbDisk(tag("hddIndex", "2")) +
                     internalDisk(tag("hddIndex", "3")) + printer(tag("printerName", "Inky")),
                 {index(1, 0), usb(1), index(2, 1), index(3, 2), usb(3), namedHere("Inky"), kGood},
                 {"|||||1|0", "|||||2|1", "|||||3|0", "|||Inky||0|1"});
}

TEST_F(DriveInfos, fifthDeviceIsOnlyPrinted)
{
    const std::string four = internalDisk("") + usbDisk("") + printer("") + usbDisk("");
    const Lines fourUsb = {usb(1), usb(2), usb(3)};
    const Lines expected = {kEmpty, kEmptyUsb, kEmptyUsb, kEmptyUsb};
    expectReport(four, join({fourUsb, {kGood}}), expected);
    expectReport(four + internalDisk(tag("hddIndex", "5")), join({fourUsb, {kTooMany}}), expected);
    expectReport(four + usbDisk(tag("modelDevName", "sde")), join({fourUsb, {usb(4, 0), kTooMany}}),
                 expected);
    expectReport(four + printer(tag("modelInfo", "Serial") + tag("printerName", "Inky")),
                 join({fourUsb, {usb(4, 0), kTooMany}}), expected);
    expectReport(four + usbDisk("\n"), join({fourUsb, {usb(4, 0), kTooMany}}), expected);
}

TEST_F(DriveInfos, nineDevicesFillFourRecords)
{
    std::string report;
    for (int i = 0; i < 9; ++i) {
        const std::string values = tag("hddIndex", std::to_string(i)) +
                                   tag("manufacturerVid", "V") + tag("manufacturerPid", "P") +
                                   tag("modelInfo", "S") + tag("modelCap", "1.234") +
                                   tag("modelDevName", "sd") + tag("printerName", "Inky");
        report += (i < 4) ? internalDisk(tag("hddIndex", std::to_string(i))) : printer(values);
    }
    expectReport(report,
                 {index(0, 0), index(1, 1), index(2, 2), index(3, 3), usb(4, 0), usb(5, 0),
                  usb(6, 0), usb(7, 0), usb(8, 0), kTooMany},
                 {"|||||0|0", "|||||1|0", "|||||2|0", "|||||3|0"});
}

TEST_F(DriveInfos, linesAreCountedOnlyInAFifthBlock)
{
    const std::string four =
        internalDisk("") + internalDisk("") + internalDisk("") + internalDisk("");
    expectReport(four + "<hddIndex>5</hddIndex>\n</status>\n", {kGood}, {});
    expectReport(four + internalDisk("") + usbDisk(""), {usb(5, 0), kGood}, {});
}

TEST_F(DriveInfos, linesOutsideABlockAreIgnored)
{
    expectReport(tag("hddIndex", "1") + tag("manufacturerVid", "V") +
                     internalDisk(tag("hddIndex", "2")) + tag("hddIndex", "3") +
                     tag("printerName", "Inky") + usbDisk(tag("hddIndex", "4")) +
                     tag("modelCap", "5"),
                 {index(2, 0), usb(1), index(4, 1), kGood}, {"|||||2|0", "|||||4|1"});
}

TEST_F(DriveInfos, openingLineMarksItsRecord)
{
    records[0].isUsb = records[1].isUsb = records[2].isUsb = 9;
    stubReport(internalDisk("") + usbDisk(""));
    expectCall(0, {usb(1), kGood}, {fetch, removal});
    expectRecords({kEmpty, kEmptyUsb, "|||||0|9"});
}

TEST_F(DriveInfos, everyClosingLineCounts)
{
    expectReport("</HDDInfo>\n" + internalDisk(tag("hddIndex", "1")) +
                     "</usbHdd>\n<usbHdd>\n<hddIndex>2</hddIndex>\n",
                 {index(1, 1), usb(3), index(2, 3), kGood},
                 {kEmpty, "|||||1|0", kEmpty, "|||||2|1"});
    expectReport("</HDDInfo>\n</usbHdd>\n</printerInfo>\n<HDDInfo>\n<hddIndex>1</hddIndex>\n"
                 "</printerInfo>\n<usbHdd>\n",
                 {index(1, 3), usb(4, 0), kGood}, {kEmpty, kEmpty, kEmpty, "|||||1|0"});
}

TEST_F(DriveInfos, openingLineInABlockStaysAtItsRecord)
{
    expectReport("<HDDInfo>\n<hddIndex>1</hddIndex>\n<usbHdd>\n<modelDevName>sdc</modelDevName>\n"
                 "</HDDInfo>\n<hddIndex>2</hddIndex>\n</usbHdd>\n" +
                     internalDisk(tag("hddIndex", "3")),
                 {index(1, 0), usb(0), "found modelDevName:sdc", index(3, 2), kGood},
                 {"|||sdc||1|1", kEmpty, "|||||3|0"});
    expectReport("<usbHdd>\n<HDDInfo>\n<hddIndex>1</hddIndex>\n", {usb(0), index(1, 0), kGood},
                 {"|||||1|0"});
}

TEST_F(DriveInfos, openingTagDecidesItsLine)
{
    expectReport("<HDDInfo><hddIndex>1</hddIndex></HDDInfo>\n<hddIndex>2</hddIndex>\n",
                 {index(2, 0), kGood}, {"|||||2|0"});
    expectReport("</HDDInfo><usbHdd><hddIndex>1</hddIndex>\n<hddIndex>2</hddIndex>\n",
                 {usb(0), index(2, 0), kGood}, {"|||||2|1"});
    expectReport("<usbHdd><HDDInfo>\n<hddIndex>2</hddIndex>\n", {index(2, 0), kGood}, {"|||||2|0"});
    expectReport("<usbHdd><printerInfo>\n<modelInfo>S</modelInfo>\n",
                 {usb(0), modelInfo("S", "S"), kGood}, {"||S|||0|1"});
}

TEST_F(DriveInfos, closingTagDecidesItsLine)
{
    expectReport("<HDDInfo>\n<hddIndex>1</hddIndex></HDDInfo>\n<hddIndex>2</hddIndex>\n", {kGood},
                 {});
    expectReport("</HDDInfo></usbHdd></printerInfo>\n<usbHdd>\n", {usb(1), kGood},
                 {kEmpty, kEmptyUsb});
}

TEST_F(DriveInfos, textThatIsAlmostAnOpeningTagOpensNothing)
{
    for (const char* opening : {"<usbHdds>", "<printerInfos>", "<HDDInfos>"}) {
        expectReport(std::string(opening) + "\n<hddIndex>1</hddIndex>\n", {kGood}, {});
    }
}

TEST_F(DriveInfos, textThatIsAlmostAClosingTagClosesNothing)
{
    for (const std::string name : {"HDDInfo", "usbHdd", "printerInfo"}) {
        expectReport("<HDDInfo>\n</" + name + "s>\n<old/" + name + ">\n<hddIndex>1</hddIndex>\n",
                     {index(1, 0), kGood}, {"|||||1|0"});
    }
}

TEST_F(DriveInfos, reportMayEndAnywhere)
{
    expectReport("<HDDInfo>", {kGood}, {});
    expectReport("<usbHdd>", {usb(0), kGood}, {kEmptyUsb});
    expectReport("<usbHdd>\n<hddIndex>5", {usb(0), index(5, 0), kGood}, {"|||||5|1"});
}

// ---- Values -------------------------------------------------------------------------------------

struct Value {
    std::string tag;
    std::string label;
    char (DriveInfo::*field)[40];
};

const std::array kValues = {
    Value{"manufacturerVid", "found manufacturerVid:", &DriveInfo::vendor},
    Value{"printerManufacture", "found printerManufacture:", &DriveInfo::vendor},
    Value{"manufacturerPid", "found model:", &DriveInfo::model},
    Value{"modelCap", "found modelCap:", &DriveInfo::capacity},
    Value{"modelDevName", "found modelDevName:", &DriveInfo::devName},
    Value{"printerName", "found printerName_index:", &DriveInfo::devName},
};

TEST_F(DriveInfos, valuesAreCutAt40Characters)
{
    for (const Value& value : kValues) {
        for (const std::size_t size : {39U, 40U, 41U, 600U}) {
            const std::string kept(std::min<std::size_t>(size, 40), 'v');
            DriveInfo expected = {};
            kept.copy(expected.*value.field, kept.size());
            expectReport(internalDisk(tag(value.tag, std::string(size, 'v'))),
                         {value.label + kept, kGood}, {described(expected)});
        }
    }
}

TEST_F(DriveInfos, shorterValueKeepsTheTailOfALongerOne)
{
    for (const Value& value : kValues) {
        DriveInfo expected = {};
        std::memcpy(expected.*value.field, "NEWer", 5);
        expectReport(internalDisk(tag(value.tag, "older") + tag(value.tag, "NEW")),
                     {value.label + "older", value.label + "NEWer", kGood}, {described(expected)});
        expectReport(internalDisk(tag(value.tag, "NEWer") + tag(value.tag, "")),
                     {value.label + "NEWer", value.label + "NEWer", kGood}, {described(expected)});
    }
}

TEST_F(DriveInfos, carriageReturnEndsAValue)
{
    for (const Value& value : kValues) {
        DriveInfo expected = {};
        std::memcpy(expected.*value.field, "ab", 2);
        expectReport(internalDisk(tag(value.tag, "ab\rcd")), {value.label + "ab", kGood},
                     {described(expected)});
    }
    expectReport(printer(tag("modelInfo", "ab\rcd") + tag("printerName", "In\rky")),
                 join({{usb(0), modelInfo("ab", "ab")}, named(0, "", "In", "ab"), {kGood}}),
                 {"||ab|In||0|1"});
}

TEST_F(DriveInfos, modelInfoIsCutAt40Characters)
{
    for (const std::size_t size : {39U, 40U, 41U, 600U}) {
        const std::string value(size, 's');
        const std::string kept = value.substr(0, 40);
        expectReport(internalDisk(tag("modelInfo", value)), {modelInfo(kept), kGood},
                     {"||" + kept + "|||0|0"});
        expectReport(printer(tag("modelInfo", value) + tag("printerName", "Inky")),
                     join({{usb(0), modelInfo(kept, kept)}, named(0, "", "Inky", kept), {kGood}}),
                     {"||" + kept + "|Inky||0|1"});
    }
}

TEST_F(DriveInfos, fullFieldsDoNotOverlap)
{
    const std::string v(40, 'v');
    const std::string m(40, 'm');
    const std::string s(40, 's');
    const std::string d(40, 'd');
    const std::string c(40, 'c');
    expectReport(usbDisk(tag("manufacturerVid", v + "x") + tag("manufacturerPid", m + "x") +
                         tag("modelInfo", s + "x") + tag("modelDevName", d + "x") +
                         tag("modelCap", c + "x") + tag("hddIndex", "1")),
                 {usb(0), "found manufacturerVid:" + v, "found model:" + m, modelInfo(s),
                  "found modelDevName:" + d, "found modelCap:" + c, index(1, 0), kGood},
                 {v + "|" + m + "|" + s + "|" + d + "|" + c + "|1|1"});
}

TEST_F(DriveInfos, valueEndsAtTheNextTagOrWithItsLine)
{
    expectReport("<HDDInfo>\n<modelDevName> s d>a <b>c</b></modelDevName>\n",
                 {"found modelDevName: s d>a ", kGood}, {"||| s d>a ||0|0"});
    expectReport("<HDDInfo>\n<modelDevName>sda\n<manufacturerPid>Model\r\n<modelCap>16",
                 {"found modelDevName:sda", "found model:Model", "found modelCap:16", kGood},
                 {"|Model||sda|16|0|0"});
}

TEST_F(DriveInfos, percentSignsStay)
{
    expectReport(internalDisk(tag("modelDevName", "%s%n%d")), {"found modelDevName:%s%n%d", kGood},
                 {"|||%s%n%d||0|0"});
}

TEST_F(DriveInfos, firstTagInTheTablesOrderTakesTheLine)
{
    const Lines inOrder = {"hddIndex",  "manufacturerVid", "printerManufacture", "manufacturerPid",
                           "modelInfo", "modelCap",        "modelDevName",       "printerName"};
    const Lines messages = {
        index(1, 0),    "found manufacturerVid:1", "found printerManufacture:1", "found model:1",
        modelInfo("1"), "found modelCap:1",        "found modelDevName:1"};
    const Lines expected = {"|||||1|0",  "1|||||0|0", "1|||||0|0", "|1||||0|0",
                            "||1|||0|0", "||||1|0|0", "|||1||0|0"};
    for (std::size_t i = 0; i < messages.size(); ++i) {
        expectReport("<HDDInfo>\n<" + inOrder[i + 1] + ">2</x><" + inOrder[i] + ">1</x>\n",
                     {messages[i], kGood}, {expected[i]});
    }
}

TEST_F(DriveInfos, indexIsADecimalNumber)
{
    const std::vector<std::pair<std::string, int>> values = {
        {"0", 0},          {"12", 12},
        {"-3", -3},        {" 08", 8},
        {"x", 0},          {"", 0},
        {"7x", 7},         {"2147483647", 2147483647},
        {"0x9", 0},        {"2147483648", -2147483647 - 1},
        {"4294967297", 1}, {"99999999999", 1215752191},
    };
    for (const auto& [value, number] : values) {
        expectReport(internalDisk(tag("hddIndex", value)), {index(number, 0), kGood},
                     {"|||||" + std::to_string(number) + "|0"});
    }
    expectReport(internalDisk(tag("hddIndex", "5") + tag("hddIndex", "x")),
                 {index(5, 0), index(0, 0), kGood}, {"|||||0|0"});
}

TEST_F(DriveInfos, longLineIsReadInPieces)
{
    expectReport("<HDDInfo>\n" + std::string(500, ' ') + "<hddIndex>12</hddIndex>\n",
                 {index(1, 0), kGood}, {"|||||1|0"});
    expectReport("<HDDInfo>\n" + std::string(502, ' ') + "<hddIndex>12</hddIndex>\n", {kGood}, {});
    expectReport("<HDDInfo>\n" + std::string(511, ' ') + "<hddIndex>12</hddIndex>\n",
                 {index(12, 0), kGood}, {"|||||12|0"});
}

// ---- Capacities ---------------------------------------------------------------------------------

class Capacities : public DriveInfos {
  protected:
    /// @param shown  what is printed: the text in the field
    /// @param field  all of the field
    void expectCapacity(const std::string& value, const std::string& shown,
                        const std::string& field)
    {
        expectReport(internalDisk(tag("modelCap", value)), {"found modelCap:" + shown, kGood},
                     {"||||" + field + "|0|0"});
    }

    void expectWhole(const std::string& value) { expectCapacity(value, value, value); }
};

TEST_F(Capacities, withoutAPointIsWhole)
{
    expectWhole("1000");
    expectWhole("");
    expectWhole(std::string(40, '1'));
}

TEST_F(Capacities, keepsTwoDigitsAfterThePoint)
{
    expectWhole("2.5");
    expectWhole("2.");
    expectWhole("2.25");
    expectWhole(".25");
    expectCapacity("931.5123", "931.51", std::string("931.51") + '\0' + "3");
    expectCapacity("931.512", "931.51", "931.51");
    expectCapacity("1.2.3.4", "1.2.", std::string("1.2.") + '\0' + ".4");
    expectCapacity("931.5 GB", "931.5 ", std::string("931.5 ") + '\0' + "B");
}

TEST_F(Capacities, latePointIsCutWithinTheField)
{
    const std::string digits(36, '1');
    expectCapacity(digits + ".234", digits + ".23", digits + ".23");
    expectCapacity(digits + ".2345", digits + ".23", digits + ".23");
    expectCapacity(digits.substr(1) + ".2345", digits.substr(1) + ".23",
                   digits.substr(1) + ".23" + '\0' + "5");
    expectWhole(digits + "1.23");
    expectCapacity(digits + "1.234", digits + "1.23", digits + "1.23");
    expectCapacity(digits + "11.23", digits + "11.2", digits + "11.2");
    expectCapacity(digits + "111.2", digits + "111.", digits + "111.");
    expectCapacity(digits + "1111.2", digits + "1111", digits + "1111");
}

TEST_F(Capacities, longestOneDoesNotChangeTheIndex)
{
    const std::string capacity = std::string(37, '1') + ".23";
    expectReport(internalDisk(tag("hddIndex", "7") + tag("modelCap", capacity)),
                 {index(7, 0), "found modelCap:" + capacity, kGood}, {"||||" + capacity + "|7|0"});
}

TEST_F(Capacities, pointOfALongerEarlierValueCounts)
{
    expectReport(internalDisk(tag("modelCap", "10.25") + tag("modelCap", "7")),
                 {"found modelCap:10.25", "found modelCap:70.25", kGood}, {"||||70.25|0|0"});
    expectReport(internalDisk(tag("modelCap", "1000") + tag("modelCap", "2.")),
                 {"found modelCap:1000", "found modelCap:2.00", kGood}, {"||||2.00|0|0"});
}

// ---- Printers -----------------------------------------------------------------------------------

using Printers = DriveInfos;

TEST_F(Printers, nameGoesToTheUsbDiskWithTheSerial)
{
    expectReport(internalDisk(tag("modelInfo", "A1")) +
                     usbDisk(tag("modelInfo", "S7") + tag("modelDevName", "lp0")) +
                     printer(tag("modelInfo", "S7") + tag("printerName", "Inky")),
                 join({{modelInfo("A1"), usb(1), modelInfo("S7"), "found modelDevName:lp0", usb(2),
                        modelInfo("S7", "S7")},
                       named(1, "lp0", "Inky", "S7"),
                       {kGood}}),
                 {"||A1|||0|0", "||S7|Inky||0|1", "||S7|||0|1"});
}

TEST_F(Printers, firstRecordWithTheSerialGetsTheName)
{
    expectReport(internalDisk(tag("modelInfo", "S7")) + usbDisk(tag("modelInfo", "S7")) +
                     printer(tag("modelInfo", "S7") + tag("printerName", "Inky")),
                 join({{modelInfo("S7"), usb(1), modelInfo("S7"), usb(2), modelInfo("S7", "S7")},
                       named(0, "", "Inky", "S7"),
                       {kGood}}),
                 {"||S7|Inky||0|0", "||S7|||0|1", "||S7|||0|1"});
}

TEST_F(Printers, serialsAreComparedWhole)
{
    expectReport(usbDisk(tag("modelInfo", "S77")) + usbDisk(tag("modelInfo", "S")) +
                     usbDisk(tag("modelInfo", "s7")) +
                     printer(tag("modelInfo", "S7") + tag("printerName", "Inky")),
                 join({{usb(0), modelInfo("S77"), usb(1), modelInfo("S"), usb(2), modelInfo("s7"),
                        usb(3), modelInfo("S7", "S7")},
                       named(3, "", "Inky", "S7"),
                       {kGood}}),
                 {"||S77|||0|1", "||S|||0|1", "||s7|||0|1", "||S7|Inky||0|1"});
    const std::string serial(39, 's');
    expectReport(
        usbDisk(tag("modelInfo", serial + "1")) +
            printer(tag("modelInfo", serial + "2") + tag("printerName", "Inky")),
        join({{usb(0), modelInfo(serial + "1"), usb(1), modelInfo(serial + "2", serial + "2")},
              named(1, "", "Inky", serial + "2"),
              {kGood}}),
        {"||" + serial + "1|||0|1", "||" + serial + "2|Inky||0|1"});
}

TEST_F(Printers, shorterNameKeepsTheTailOfALongerOne)
{
    expectReport(usbDisk(tag("modelInfo", "S7") + tag("modelDevName", "printer")) +
                     printer(tag("modelInfo", "S7") + tag("printerName", "INK")),
                 join({{usb(0), modelInfo("S7"), "found modelDevName:printer", usb(1),
                        modelInfo("S7", "S7")},
                       named(0, "printer", "INKnter", "S7"),
                       {kGood}}),
                 {"||S7|INKnter||0|1", "||S7|||0|1"});
}

TEST_F(Printers, nameIsCutAt40Characters)
{
    const std::string serial(40, 's');
    for (const std::size_t size : {39U, 40U, 41U, 600U}) {
        const std::string name(size, 'n');
        const std::string kept = name.substr(0, 40);
        expectReport(usbDisk(tag("modelInfo", serial)) +
                         printer(tag("modelInfo", serial) + tag("printerName", name)),
                     join({{usb(0), modelInfo(serial), usb(1), modelInfo(serial, serial)},
                           named(0, "", kept, serial),
                           {kGood}}),
                     {"||" + serial + "|" + kept + "||0|1", "||" + serial + "|||0|1"});
    }
}

TEST_F(Printers, withoutASerialTheNameStaysInThePrintersRecord)
{
    expectReport(usbDisk(tag("modelInfo", "S7")) +
                     printer(tag("printerName", "Inky") + tag("modelInfo", "S7")),
                 {usb(0), modelInfo("S7"), usb(1), namedHere("Inky"), modelInfo("S7", "S7"), kGood},
                 {"||S7|||0|1", "||S7|Inky||0|1"});
    expectReport(printer(tag("modelInfo", "") + tag("printerName", "Inky")),
                 {usb(0), modelInfo(""), namedHere("Inky"), kGood}, {"|||Inky||0|1"});
    expectReport(usbDisk(tag("modelInfo", "S7") + tag("printerName", "Inky")),
                 {usb(0), modelInfo("S7"), namedHere("Inky"), kGood}, {"||S7|Inky||0|1"});
}

TEST_F(Printers, nameGoesToThePrinterIfNoOtherRecordHasItsSerial)
{
    // The record keeps the tail of its earlier text; the printer's serial number has none.
    expectReport(
        "<usbHdd>\n<modelInfo>ABCD</modelInfo>\n<printerInfo>\n<modelInfo>XY</modelInfo>\n"
        "<printerName>Inky</printerName>\n",
        {usb(0), modelInfo("ABCD"), usb(0), modelInfo("XYCD", "XY"), namedHere("Inky"), kGood},
        {"||XYCD|Inky||0|1"});
}

TEST_F(Printers, serialIsForgottenAfterItsName)
{
    expectReport(usbDisk(tag("modelInfo", "S7")) +
                     printer(tag("modelInfo", "S7") + tag("printerName", "Inky") +
                             tag("printerName", "Dry")),
                 join({{usb(0), modelInfo("S7"), usb(1), modelInfo("S7", "S7")},
                       named(0, "", "Inky", "S7"),
                       {namedHere("Dry"), kGood}}),
                 {"||S7|Inky||0|1", "||S7|Dry||0|1"});
    expectReport("<usbHdd>\n<modelInfo>ABCD</modelInfo>\n<printerInfo>\n<modelInfo>XY</modelInfo>\n"
                 "<printerName>Inky</printerName>\n<modelInfo>Z</modelInfo>\n",
                 {usb(0), modelInfo("ABCD"), usb(0), modelInfo("XYCD", "XY"), namedHere("Inky"),
                  modelInfo("ZYCD", "Z"), kGood},
                 {"||ZYCD|Inky||0|1"});
}

TEST_F(Printers, shorterSerialKeepsTheTailOfALongerOne)
{
    expectReport(
        printer(tag("modelInfo", "SERIAL") + tag("modelInfo", "ab") + tag("printerName", "Inky")),
        join({{usb(0), modelInfo("SERIAL", "SERIAL"), modelInfo("abRIAL", "abRIAL")},
              named(0, "", "Inky", "abRIAL"),
              {kGood}}),
        {"||abRIAL|Inky||0|1"});
}

TEST_F(Printers, nextPrinterBeginsWithoutASerial)
{
    expectReport(printer(tag("modelInfo", "SERIAL")) +
                     printer(tag("modelInfo", "ab") + tag("printerName", "Inky")),
                 join({{usb(0), modelInfo("SERIAL", "SERIAL"), usb(1), modelInfo("ab", "ab")},
                       named(1, "", "Inky", "ab"),
                       {kGood}}),
                 {"||SERIAL|||0|1", "||ab|Inky||0|1"});
}

TEST_F(Printers, usbDiskDoesNotChangeThePrintersSerial)
{
    expectReport(printer(tag("modelInfo", "S7")) +
                     usbDisk(tag("printerName", "Dry") + tag("modelInfo", "S8")),
                 {usb(0), modelInfo("S7", "S7"), usb(1), namedHere("Dry"), modelInfo("S8"), kGood},
                 {"||S7|||0|1", "||S8|Dry||0|1"});
    expectReport(printer(tag("modelInfo", "S7")) +
                     usbDisk(tag("modelInfo", "S8") + tag("printerName", "Inky")),
                 join({{usb(0), modelInfo("S7", "S7"), usb(1), modelInfo("S8", "S7")},
                       named(0, "", "Inky", "S7"),
                       {kGood}}),
                 {"||S7|Inky||0|1", "||S8|||0|1"});
}

TEST_F(Printers, internalDiskDoesNotChangeThePrinterFlag)
{
    expectReport(printer("") + internalDisk(tag("modelInfo", "S7")) +
                     usbDisk(tag("modelInfo", "S8")),
                 {usb(0), modelInfo("S7", "S7"), usb(2), modelInfo("S8", "S7"), kGood},
                 {kEmptyUsb, "||S7|||0|0", "||S8|||0|1"});
}

TEST_F(Printers, printerAfterTheFourthRecordNamesNone)
{
    expectReport(usbDisk(tag("modelInfo", "S7")) + internalDisk("") + internalDisk("") +
                     internalDisk("") +
                     printer(tag("modelInfo", "S7") + tag("printerName", "Inky")),
                 {usb(0), modelInfo("S7"), usb(4, 0), kTooMany}, {"||S7|||0|1"});
}

TEST_F(Printers, nextCallBeginsWithoutASerial)
{
    expectReport(printer(tag("modelInfo", "S7")), {usb(0), modelInfo("S7", "S7"), kGood},
                 {"||S7|||0|1"});
    expectReport(internalDisk(tag("modelInfo", "S8")), {modelInfo("S8"), kGood}, {"||S8|||0|0"});
}

// ---- Reports that cannot be had -----------------------------------------------------------------

class MissingReport : public DriveInfos {
  protected:
    void expectFailure(const std::string& result, const std::string& error)
    {
        expectCall(-1, {"failed system(" + fetch + "), iRet: " + result + " -- syserr:" + error},
                   {fetch});
        expectRecords({});
    }
};

TEST_F(MissingReport, failingScriptLeavesItsFile)
{
    root::writeFile("/stubs/report", usbDisk(""));
    root::stub("php", "cat /stubs/report >\"$3\"; exit 3");
    expectFailure("768", "Success");
    EXPECT_EQ(root::readFile(output), usbDisk(""));
}

TEST_F(MissingReport, olderErrnoIsNotPrinted)
{
    root::stub("php", "exit 1");
    errno = EIO;
    expectFailure("256", "Success");
}

TEST_F(MissingReport, scriptThatCannotRunIsAFailure)
{
    root::writeFile(output, usbDisk(""));
    watch::answer("sudo /usr/bin/php", -1, EAGAIN);
    expectFailure("-1", "Resource temporarily unavailable");
    EXPECT_TRUE(root::exists(output));
}

TEST_F(MissingReport, scriptReapedElsewhereIsAFailure)
{
    stubReport(usbDisk(""));
    std::signal(SIGCHLD, SIG_IGN);
    expectFailure("-1", "No child processes");
}

TEST_F(MissingReport, missingFileIsNoFailure)
{
    root::stub("php", "exit 0");
    expectCall(0, {"failed open file " + output + ", syserr:No such file or directory", kGood},
               {fetch, removal});
    expectRecords({});
}

TEST_F(MissingReport, unreadableFileIsNoFailure)
{
    root::writeFile("/stubs/report", usbDisk(""));
    root::stub("php", "cat /stubs/report >\"$3\"; chmod 000 \"$3\"");
    expectCall(0, {"failed open file " + output + ", syserr:Permission denied", kGood},
               {fetch, removal});
    expectRecords({});
    EXPECT_FALSE(root::exists(output));
}

TEST_F(MissingReport, folderInItsPlaceIsAnEmptyReport)
{
    root::stub("php", "mkdir \"$3\"");
    expectCall(0, {kGood}, {fetch, removal});
    expectRecords({});
}

TEST_F(MissingReport, failingRemovalIsNoFailure)
{
    stubReport(usbDisk(""));
    watch::answer("sudo rm", -1, EAGAIN);
    expectCall(0, {usb(0), kGood}, {fetch, removal});
    expectRecords({kEmptyUsb});
}

TEST_F(DriveInfos, eachCommentIsFlushedAtOnceAndTheLastBeforeTheRemoval)
{
    stubReport(usbDisk(tag("hddIndex", "1") + tag("manufacturerVid", "V") +
                       tag("manufacturerPid", "M") + tag("modelInfo", "S") + tag("modelCap", "1") +
                       tag("modelDevName", "sdc")) +
               printer(tag("printerManufacture", "V") + tag("printerName", "Dry") +
                       tag("modelInfo", "S") + tag("printerName", "Inky")));
    root::stub("rm", "echo removing; /usr/bin/rm \"$@\"");
    bool isOpen = true;
    watch::after(removal, [&] { isOpen = root::isOpen(output); });
    Lines pieces;
    for (const std::string& message :
         join({{usb(0), index(1, 0), "found manufacturerVid:V", "found model:M", modelInfo("S"),
                "found modelCap:1", "found modelDevName:sdc", usb(1), "found printerManufacture:V",
                namedHere("Dry"), modelInfo("S", "S")},
               named(0, "sdc", "Inky", "S"),
               {kGood}})) {
        pieces.push_back(comments({message}));
    }
    pieces.emplace_back("removing\n");
    EXPECT_EQ(root::printedPieces([&] { EXPECT_EQ(getDriveInfos(records.data()), 0); }), pieces);
    EXPECT_FALSE(isOpen);
}

TEST_F(MissingReport, isPrintedAtOnce)
{
    root::stub("php", "exit 0");
    root::stub("rm", "echo removing; /usr/bin/rm \"$@\"");
    EXPECT_EQ(
        root::printedPieces([&] { EXPECT_EQ(getDriveInfos(records.data()), 0); }),
        (Lines{comments({"failed open file " + output + ", syserr:No such file or directory"}),
               comments({kGood}), "removing\n"}));
}

} // namespace
