// SPDX-License-Identifier: MIT
#include "handlers/backup_status.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <span>
#include <string_view>

#include "cmdsvc/channel.h"
#include "cmdsvc/protocol.h"
#include "core/bytes.h"
#include "core/core.h"
#include "handlers/drives.h"
#include "sharestatus/share_record.h"

namespace handlers {
namespace {

using cmdsvc::kWorkFile;
using cmdsvc::requestLine;
using sharestatus::kBackupStatusPrefix;

// ---- A report ---------------------------------------------------------------------------------

/// The state digit, the date, and what else a line of date's output may hold before it is cut.
using Report = std::array<char, 257>;

constexpr std::size_t kReportSize = 9;
constexpr std::size_t kReportedDate = 1;

/// A report of a state, without its date.
Report makeReport(std::uint8_t state)
{
    Report report = {};
    core::formatBounded(report, "%01d", static_cast<int>(state));
    core::formatBounded(std::span(report).subspan(kReportedDate), "00000000");
    return report;
}

/// Cuts a report to its size. A date that is too short must not bring its newline in.
void cutReport(Report& report)
{
    report[kReportSize] = '\0';
    report[std::strcspn(report.data(), "\n")] = '\0';
}

core::CommandLine dateLine()
{
    core::CommandLine line;
    core::formatBounded(line, "%s > %s", "date +%m%d%Y", kWorkFile);
    return line;
}

/// Puts today's date into a report, where it can be read.
/// @return false when date could not be run
bool takeDate(const char* line, Report& report)
{
    if (core::runShellLine(line).result == -1) {
        return false;
    }
    core::File output = core::openFile(kWorkFile, "r");
    if (output) {
        const std::span<char> date = std::span(report).subspan(kReportedDate);
        // Not core::readLine: without a line the zeros must stay.
        [[maybe_unused]] const char* const read =
            std::fgets(date.data(), static_cast<int>(date.size()), output.get());
        output.reset();
        if (std::remove(kWorkFile) == -1) {
            // The name is another work file's; the message has been kept.
            dbg_trace("cannot remove file %s: %s", "/tmp/vokcontrol2.tmp", std::strerror(errno));
        }
    }
    cutReport(report);
    return true;
}

// ---- subs -------------------------------------------------------------------------------------

/// Where the parameters of a subs request stand in its first line.
constexpr std::size_t kLengthOffset = 5;
constexpr std::size_t kStateOffset = 7;
constexpr std::size_t kNameOffset = 8;

constexpr int kLongestVariableName = 64;

/// Reads the rest of a first line that has ended at its length, which is a newline.
void completeLine()
{
    if (requestLine[kLengthOffset] == '\n') {
        const std::span<char> rest = std::span(requestLine).subspan(kLengthOffset + 1);
        [[maybe_unused]] const char* const read =
            std::fgets(rest.data(), static_cast<int>(rest.size()), cmdsvc::requestStream());
    }
}

/// Room for a name with its prefix.
using Key = std::array<char, 128>;

Key variableName()
{
    const char* name = &requestLine[kNameOffset];
    const int size = std::min(static_cast<int>(std::strcspn(name, "\n")), kLongestVariableName);
    Key key;
    core::formatBounded(key, "%s%.*s", kBackupStatusPrefix, size, name);
    return key;
}

/// Keeps a report; a failed save is answered twice, first with its code and then like a good one.
void saveVariable(const char* key, const char* report)
{
    const int result = setvar(key, report);
    if (result < 0) {
        dbg_trace("failed saving bk status %d ", result);
        SendReturnStatus(cmdsvc::kReportNotSaved, "subs");
    }
    dbg_trace("return good %d", result);
    SendReturnStatus(cmdsvc::kGood, "subs");
}

// ---- sub1 -------------------------------------------------------------------------------------

constexpr int kMostNameBytes = 67;
constexpr std::size_t kLongestKey = 64;

/// Reads a name off the request, up to a newline or a zero byte. The end of the request in its
/// middle fills it up, so that it is too long.
Key readKey()
{
    Key key;
    core::formatBounded(key, "%s", kBackupStatusPrefix);
    std::size_t size = std::strlen(key.data());
    for (int taken = 0; taken < kMostNameBytes;) {
        const int byte = std::fgetc(cmdsvc::requestStream());
        if (byte == '\n' || byte == '\0') {
            break;
        }
        if (byte != '\\') {
            key[size] = static_cast<char>(byte);
            ++size;
            ++taken;
        }
    }
    key[size] = '\0';
    return key;
}

bool writeReport(const char* path, std::string_view report)
{
    core::File file = core::openFile(path, "w");
    if (!file) {
        return false;
    }
    const bool isWritten =
        std::fwrite(report.data(), 1, report.size(), file.get()) == report.size();
    return std::fclose(file.release()) == 0 && isWritten;
}

void saveFile(const char* key, const char* report)
{
    std::array<char, 256> path;
    core::formatBounded(path, "%s%s", sharestatus::kBackupStatusFolder, key);
    if (!writeReport(path.data(), report)) {
        const int error = errno;
        dbg_trace("failed saving bk status to: %s- system err:%d(%s)", path.data(), error,
                  std::strerror(error));
        cmdsvc::endWithWord(cmdsvc::kReportNotSaved);
        return;
    }
    dbg_trace("return good %d", 0);
    cmdsvc::writeWord(cmdsvc::kGood);
}

// ---- gub1 -------------------------------------------------------------------------------------

constexpr std::size_t kCountOffset = 5;
constexpr std::size_t kCapacityOffset = 7;

/// The answer while it is made.
struct Table {
    std::array<char, core::kLineSize> bytes = {};
    std::size_t size = 0; ///< of the published payload
    bool isFresh = false; ///< whether the daemon has just been run

    [[nodiscard]] std::uint16_t count() const
    {
        return core::getU16(std::span(bytes).subspan<kCountOffset, 2>());
    }
};

void traceCount(const Table& table)
{
    dbg_trace("cmd_gub1(1) -- numberofuser:%d", table.count());
}

/// Takes the published payload, where there is one.
bool takeStatus(Table& table)
{
    std::array<char, core::kLineSize> payload;
    table.size = static_cast<std::size_t>(Read_Status_file(payload.data()));
    std::copy_n(payload.begin(), table.size, table.bytes.begin());
    return table.size > 0;
}

/// Leaves a mark for whoever waits for a first status.
void markServed()
{
    std::array<char, cmdsvc::kWordSize> one;
    core::putU32(one, 1);
    const core::File mark = core::openFile("/tmp/bkstart", "w");
    if (mark) {
        std::fwrite(one.data(), 1, one.size(), mark.get());
    }
}

/// Runs a collection, and takes what it has published.
void collectStatus(Table& table)
{
    constexpr const char* kDaemon = "pelstatus";
    dbg_trace("cmd_gub1 -- sys_cmd = %s", kDaemon);
    const core::ShellRun run = core::runShellLine(kDaemon);
    if (run.result == -1) {
        dbg_trace("cmd_gub1 -- failed system(%s), ret: %d", std::strerror(run.error), run.result);
        traceCount(table);
        return;
    }
    if (takeStatus(table)) {
        const auto newlines = std::ranges::count(std::span(table.bytes).first(table.size), '\n');
        core::putU16(std::span(table.bytes).subspan<kCountOffset, 2>(),
                     static_cast<std::uint16_t>(newlines));
    }
    table.isFresh = true;
    traceCount(table);
}

void fillTable(Table& table)
{
    if (!takeStatus(table)) {
        collectStatus(table);
        return;
    }
    markServed();
    dbg_trace("cmd_gub1 -- numberofuser:%d len = %d", table.count(), static_cast<int>(table.size));
    traceCount(table);
}

void putHeader(Table& table, int capacity)
{
    constexpr std::string_view kTag = "gubr ";
    std::ranges::copy(kTag, table.bytes.begin());
    core::putU16(std::span(table.bytes).subspan<kCapacityOffset, 2>(),
                 static_cast<std::uint16_t>(capacity));
    table.bytes[cmdsvc::kHeaderSize - 1] = '\n';
}

/// Traces all bytes but the last, a line each.
void traceBytes(std::span<const char> bytes)
{
    dbg_trace("cmd_gub1() %s", " ");
    for (std::size_t i = 0; i + 1 < bytes.size(); ++i) {
        dbg_trace("%03d %02X\t%c", static_cast<int>(i),
                  static_cast<unsigned>(core::byteOf(bytes[i])), bytes[i]);
    }
}

void answerTable(const Table& table, std::span<const char> bytes)
{
    if (table.count() == 0) {
        cmdsvc::writeAnswer({bytes.data(), cmdsvc::kHeaderSize});
        dbg_trace("cmd_gub1 -- RetUsersBkStatus -- No User %d", 0);
        return;
    }
    const std::size_t written = std::fwrite(bytes.data(), 1, bytes.size(), fout_buf);
    dbg_trace("cmd_gub1 -- RetUsersBkStatus return: byte written: %d", static_cast<int>(written));
}

} // namespace
} // namespace handlers

void cmd_subs(void)
{
    using namespace handlers;

    completeLine();
    const int length = core::byteOf(requestLine[kLengthOffset]);
    dbg_trace("cmd_subs line: %s -- %d", &requestLine[kNameOffset], length);
    if (length < 3 || length > 66) {
        SendReturnStatus(cmdsvc::kMalformed, "subs");
        return;
    }
    const Key key = variableName();
    Report report = makeReport(core::byteOf(requestLine[kStateOffset]));
    const core::CommandLine line = dateLine();
    dbg_trace("cmd_subs system(%s) ", line.data());
    if (!takeDate(line.data(), report)) {
        SendReturnStatus(cmdsvc::kNoDate, "subs");
        return;
    }
    saveVariable(key.data(), report.data());
}

void cmd_sub1(void)
{
    using namespace handlers;

    const int state = std::fgetc(cmdsvc::requestStream());
    std::fgetc(cmdsvc::requestStream());
    const Key key = readKey();
    const std::size_t size = std::strlen(key.data());
    if (size > kLongestKey) {
        cmdsvc::endWithWord(cmdsvc::kMalformed);
        return;
    }
    dbg_trace("user name = %s", key.data());
    Report report = makeReport(static_cast<std::uint8_t>(state));
    const core::CommandLine line = dateLine();
    dbg_trace("cmd_sub1 system(%s) nlen = %d ", line.data(), static_cast<int>(size));
    if (!takeDate(line.data(), report)) {
        cmdsvc::endWithWord(cmdsvc::kNoDate);
        return;
    }
    saveFile(key.data(), report.data());
}

void cmd_gub1(void)
{
    using namespace handlers;

    Table table;
    const int capacity = GetInternalDiskCap();
    fillTable(table);
    putHeader(table, capacity);
    const std::span<const char> bytes =
        std::span(table.bytes).first(std::max(table.size, cmdsvc::kHeaderSize));
    traceBytes(bytes);
    if (!table.isFresh) {
        startPelStatus();
    }
    answerTable(table, bytes);
}

void cmd_grst(void)
{
    const bool isReadable = GetTovHDDS() >= 0;
    cmdsvc::endWithWord(isReadable ? cmdsvc::kDriveCountReadable : cmdsvc::kCommandFailed);
}
