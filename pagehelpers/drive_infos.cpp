// SPDX-License-Identifier: MIT
//
// The disks and printers that are attached, as records for a page.
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <span>
#include <string_view>

#include "core/core.h"
#include "pagehelpers/system_status.h"
#include "vokcontrol.h"

namespace pagehelpers {
namespace {

constexpr std::size_t kRecords = 4;

using Field = decltype(DriveInfo::vendor);

// The precision of a format's %.*s for a field that may lack its terminator.
constexpr int kFieldSize = sizeof(Field);

/// A value that is copied unchanged, and its message.
struct TextValue {
    const char* tag;
    Field DriveInfo::*field;
    const char* label;
};

constexpr TextValue kVendor = {"<manufacturerVid>", &DriveInfo::vendor, "manufacturerVid"};
constexpr TextValue kMaker = {"<printerManufacture>", &DriveInfo::vendor, "printerManufacture"};
constexpr TextValue kModel = {"<manufacturerPid>", &DriveInfo::model, "model"};
constexpr TextValue kDevName = {"<modelDevName>", &DriveInfo::devName, "modelDevName"};

bool isEmpty(const Field& field)
{
    return field[0] == '\0';
}

/// Copies a value into a field. The bytes of the field after the value are not changed.
void copyValue(std::string_view value, Field& field)
{
    std::ranges::copy(value, std::begin(field));
}

/// Reads a report line by line into the records.
class ReportReader {
  public:
    explicit ReportReader(std::span<DriveInfo, kRecords> records) : records_(records) {}

    void read(FILE* report);

    /// 0, or -1 if there were more devices than records.
    [[nodiscard]] int result() const { return result_; }

  private:
    bool openBlock(const ReportLine& line);
    bool closeBlock(const ReportLine& line);
    void openInternalDisk();
    void openUsbDevice(bool isPrinter);

    // Each handles a line with its tag, and returns whether the line has the tag.
    bool readIndex(const ReportLine& line);
    bool readText(const ReportLine& line, const TextValue& value);
    bool readModelInfo(const ReportLine& line);
    bool readCapacity(const ReportLine& line);
    bool readPrinterName(const ReportLine& line);

    void readValue(const ReportLine& line);
    void namePrinter(std::string_view name);
    DriveInfo* findPrinter();

    [[nodiscard]] bool hasRecord() const { return block_ < kRecords; }
    [[nodiscard]] DriveInfo& record() { return records_[block_]; }

    std::span<DriveInfo, kRecords> records_;
    std::size_t block_ = 0;
    bool isInBlock_ = false;
    bool isPrinter_ = false;
    Field printerSerial_ = {};
    int result_ = 0;
};

void ReportReader::read(FILE* report)
{
    ReportLine line;
    while (core::readLine(report, line)) {
        if (openBlock(line) || closeBlock(line) || !isInBlock_) {
            continue;
        }
        if (hasRecord()) {
            readValue(line);
        } else {
            result_ = -1;
        }
    }
}

bool ReportReader::openBlock(const ReportLine& line)
{
    if (contains(line, kInternalDisk)) {
        openInternalDisk();
        return true;
    }
    const bool isDisk = contains(line, "<usbHdd>");
    const bool isPrinter = contains(line, "<printerInfo>");
    if (isDisk || isPrinter) {
        openUsbDevice(isPrinter);
    }
    return isDisk || isPrinter;
}

void ReportReader::openInternalDisk()
{
    if (hasRecord()) {
        record().isUsb = 0;
    }
    isInBlock_ = true;
}

void ReportReader::openUsbDevice(bool isPrinter)
{
    if (hasRecord()) {
        record().isUsb = 1;
    }
    isInBlock_ = true;
    core::printComment("getDriveInfos() found usb device:%d index: %d", hasRecord() ? 1 : 0,
                       static_cast<int>(block_));
    isPrinter_ = isPrinter;
    if (isPrinter) {
        std::ranges::fill(printerSerial_, '\0');
    }
}

bool ReportReader::closeBlock(const ReportLine& line)
{
    for (const char* tag : {"</HDDInfo>", "</usbHdd>", "</printerInfo>"}) {
        if (contains(line, tag)) {
            ++block_;
            isInBlock_ = false;
            return true;
        }
    }
    return false;
}

void ReportReader::readValue(const ReportLine& line)
{
    // If a line has several tags, the first of these counts.
    [[maybe_unused]] const bool isValue = readIndex(line) || readText(line, kVendor) ||
                                          readText(line, kMaker) || readText(line, kModel) ||
                                          readModelInfo(line) || readCapacity(line) ||
                                          readText(line, kDevName) || readPrinterName(line);
}

bool ReportReader::readIndex(const ReportLine& line)
{
    constexpr const char* kTag = "<hddIndex>";
    if (!contains(line, kTag)) {
        return false;
    }
    record().index = numberBehind(line, kTag);
    core::printComment("getDriveInfos() found index:%d -- index:%d", record().index,
                       static_cast<int>(block_));
    return true;
}

bool ReportReader::readText(const ReportLine& line, const TextValue& value)
{
    if (!contains(line, value.tag)) {
        return false;
    }
    Field& field = record().*value.field;
    copyValue(valueBehind(line, value.tag), field);
    core::printComment("getDriveInfos() found %s:%.*s", value.label, kFieldSize, field);
    return true;
}

bool ReportReader::readModelInfo(const ReportLine& line)
{
    constexpr const char* kTag = "<modelInfo>";
    if (!contains(line, kTag)) {
        return false;
    }
    const std::string_view value = valueBehind(line, kTag);
    copyValue(value, record().modelInfo);
    if (isPrinter_) {
        copyValue(value, printerSerial_);
    }
    core::printComment("getDriveInfos() found modelInfo:%.*s -- PrinterSn:%.*s", kFieldSize,
                       record().modelInfo, kFieldSize, printerSerial_);
    return true;
}

/// Keeps two digits after the point.
bool ReportReader::readCapacity(const ReportLine& line)
{
    constexpr const char* kTag = "<modelCap>";
    if (!contains(line, kTag)) {
        return false;
    }
    Field& capacity = record().capacity;
    copyValue(valueBehind(line, kTag), capacity);
    const std::string_view text(capacity, ::strnlen(capacity, sizeof capacity));
    const std::size_t point = text.find('.');
    constexpr std::size_t kKept = 3;
    if (point != std::string_view::npos && point + kKept < sizeof capacity) {
        capacity[point + kKept] = '\0';
    }
    core::printComment("getDriveInfos() found modelCap:%.*s", kFieldSize, capacity);
    return true;
}

/// The first record with the printer's serial number, if the report has that number.
DriveInfo* ReportReader::findPrinter()
{
    if (isEmpty(record().modelInfo) || isEmpty(printerSerial_)) {
        return nullptr;
    }
    const auto found = std::ranges::find_if(records_, [this](const DriveInfo& each) {
        return std::strncmp(each.modelInfo, printerSerial_, sizeof printerSerial_) == 0;
    });
    return (found != records_.end()) ? &*found : nullptr;
}

bool ReportReader::readPrinterName(const ReportLine& line)
{
    constexpr const char* kTag = "<printerName>";
    if (!contains(line, kTag)) {
        return false;
    }
    namePrinter(valueBehind(line, kTag));
    std::ranges::fill(printerSerial_, '\0');
    return true;
}

void ReportReader::namePrinter(std::string_view name)
{
    if (DriveInfo* printer = findPrinter()) {
        core::printComment("getDriveInfos() found Usb Printer at index: %d -- :%.*s",
                           static_cast<int>(printer - records_.data()), kFieldSize,
                           printer->devName);
        copyValue(name, printer->devName);
        core::printComment("getDriveInfos() found printerName_n:%.*s -- PrinterSn: %.*s",
                           kFieldSize, printer->devName, kFieldSize, printerSerial_);
    } else {
        copyValue(name, record().devName);
        core::printComment("getDriveInfos() found printerName_index:%.*s", kFieldSize,
                           record().devName);
    }
}

/// @return 0, or -1 if there were more devices than records
int readReport(const char* path, std::span<DriveInfo, kRecords> records)
{
    const core::File report = core::openFile(path, "r");
    if (!report) {
        core::printComment("getDriveInfos() failed open file %s, syserr:%s", path,
                           std::strerror(errno));
        return 0;
    }
    ReportReader reader(records);
    reader.read(report.get());
    return reader.result();
}

} // namespace
} // namespace pagehelpers

int getDriveInfos(DriveInfo records[4])
{
    using namespace pagehelpers;

    const core::WorkFileName path = core::workFileName("getDriveInfos");
    const core::CommandLine command = reportCommand(path.data());
    const core::ShellRun run = core::runShellLine(command.data());
    if (!core::succeeded(run)) {
        core::printComment("getDriveInfos() failed system(%s), iRet: %d -- syserr:%s",
                           command.data(), run.result, std::strerror(run.error));
        return -1;
    }
    const int result = readReport(path.data(), std::span<DriveInfo, kRecords>(records, kRecords));
    // Too many devices are only a message; the records are good.
    core::printComment("getDriveInfos() iRet = %d ", result);
    removeFile(path.data());
    return 0;
}
