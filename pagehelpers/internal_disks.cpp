// SPDX-License-Identifier: MIT
//
// The names, the indices and the number of the internal disks.
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

// Names and indices use one work file.
constexpr const char* kWorkFile = "getInternalHDDDev";

/// The names, without separators.
std::array<char, core::kValueSize> names;

/// The text between the last ">" before a closing tag and that tag; empty if there is no ">".
std::string_view nameIn(const ReportLine& line, std::string_view closingTag)
{
    const std::string_view text = line.data();
    const std::string_view before = text.substr(0, text.find(closingTag));
    const std::size_t open = before.rfind('>');
    return (open == std::string_view::npos) ? std::string_view() : before.substr(open + 1);
}

void appendName(std::string_view name)
{
    const std::size_t size = std::strlen(names.data());
    core::formatBounded(std::span(names).subspan(size), "%.*s", static_cast<int>(name.size()),
                        name.data());
}

void collectNames(FILE* report)
{
    constexpr const char* kNameEnd = "</modelDevName>";
    bool isInDisk = false;
    ReportLine line;
    while (core::readLine(report, line)) {
        if (!isInDisk) {
            isInDisk = contains(line, kInternalDisk);
        } else if (contains(line, kNameEnd)) {
            appendName(nameIn(line, kNameEnd));
            isInDisk = false;
        }
    }
}

/// Fetches the report and collects the names in it.
void fetchNames(const char* path)
{
    const core::CommandLine command = reportCommand(path);
    const core::ShellRun run = core::runShellLine(command.data());
    if (!core::succeeded(run)) {
        core::printComment("getInternalHDDDev() failed system(%s), iRet: %d", command.data(),
                           run.result);
        return;
    }
    const core::File report = core::openFile(path, "r");
    if (!report) {
        core::printComment("getInternalHDDDev() failed open file %s, syserr:%s", path,
                           std::strerror(errno));
        return;
    }
    collectNames(report.get());
}

/// Stores the first two indices.
void collectIndices(FILE* report, std::int32_t* indices)
{
    constexpr const char* kIndex = "<hddIndex>";
    int count = 0;
    bool isInDisk = false;
    ReportLine line;
    while (core::readLine(report, line)) {
        if (contains(line, kInternalDisk)) {
            isInDisk = true;
        }
        if (isInDisk && contains(line, kIndex)) {
            isInDisk = false;
            const std::int32_t index = numberBehind(line, kIndex);
            if (count < 2) {
                indices[count] = index;
            }
            core::printComment("getInternalHDDIndex() found index:%d -- at location: %d", index,
                               count);
            ++count;
        }
    }
}

int readDriveCount(const char* path)
{
    constexpr int kDefault = 1;
    const core::File output = core::openFile(path, "r");
    if (!output) {
        core::printComment("printTovHDDs failed open file %s, strerr: %s", path,
                           std::strerror(errno));
        return kDefault;
    }
    return core::readNumber(output.get(), kDefault);
}

/// Asks for the number of drives.
/// @param result  what system() returned
int askDriveCount(int& result)
{
    const core::WorkFileName path = core::workFileName("printTovHDDs");
    core::CommandLine command;
    core::formatBounded(command, "sudo pelparam -d > %s", path.data());
    const core::ShellRun run = core::runShellLine(command.data());
    result = run.result;
    if (run.result < 0) {
        core::printComment("printTovHDDs failed system(%s), iRet:%d, strerr: %s", command.data(),
                           run.result, std::strerror(run.error));
        return 1;
    }
    const int count = readDriveCount(path.data());
    removeFile(path.data());
    return count;
}

} // namespace
} // namespace pagehelpers

const char* getInternalHDDDev(void)
{
    using namespace pagehelpers;

    const core::WorkFileName path = core::workFileName(kWorkFile);
    names.fill('\0');
    fetchNames(path.data());
    core::printComment("getInternalHDDDev() cRet:%s", names.data());
    removeFile(path.data());
    return names.data();
}

int getInternalHDDIndex(std::int32_t indices[2])
{
    using namespace pagehelpers;

    const core::WorkFileName path = core::workFileName(kWorkFile);
    const core::CommandLine command = reportCommand(path.data());
    const core::ShellRun run = core::runShellLine(command.data());
    if (!core::succeeded(run)) {
        core::printComment("getInternalHDDIndex() failed system(%s), iRet: %d", command.data(),
                           run.result);
        return -1;
    }
    core::File report = core::openFile(path.data(), "r");
    if (report) {
        collectIndices(report.get(), indices);
    } else {
        core::printComment("getInternalHDDIndex() failed open file %s, syserr:%s", path.data(),
                           std::strerror(errno));
    }
    report.reset();
    core::printComment("getInternalHDDIndex() %d , %d", indices[0], indices[1]);
    removeFile(path.data());
    return 0;
}

int printTovHDDs(void)
{
    int result = 0;
    const int count = pagehelpers::askDriveCount(result);
    std::printf("function tov_hdds()\n{\n\treturn %d;\n}\n", count);
    return result;
}
