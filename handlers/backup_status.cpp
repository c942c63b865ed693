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

#include "core/bytes.h"
#include "handlers/drives.h"
#include "handlers/handler.h"
#include "sharestatus/share_record.h"

namespace handlers {
namespace {

using sharestatus::kBackupStatusPrefix;

// ---- A report ---------------------------------------------------------------------------------

/// The state digit and a line of date's output, before it is cut to the date.
using Report = std::array<char, 257>;

constexpr std::size_t kReportSize = 9;
constexpr std::size_t kReportedDate = 1;

/// A report with a state and zeros for the date.
Report makeReport(std::uint8_t state)
{
    Report report = {};
    core::formatBounded(report, "%01d", static_cast<int>(state));
    core::formatBounded(std::span(report).subspan(kReportedDate), "00000000");
    return report;
}

/// Cuts a report to its size, and the newline off a date that is too short.
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

/// Puts today's date into a report, if date's output can be read.
/// @return false if date could not be run
bool takeDate(const char* line, Report& report)
{
    if (core::runShellLine(line).result == -1) {
        return false;
    }
    core::File output = core::openFile(kWorkFile, "r");
    if (output) {
        const std::span<char> date = std::span(report).subspan(kReportedDate);
        // Not core::readLine: if there is no line, the zeros must stay.
        [[maybe_unused]] const char* const read =
            std::fgets(date.data(), static_cast<int>(date.size()), output.get());
        output.reset();
        if (std::remove(kWorkFile) == -1) {
            // The trace names another file than the one removed; its text is part of the interface.
            dbg_trace("cannot remove file %s: %s", "/tmp/vokcontrol2.tmp", std::strerror(errno));
        }
    }
    cutReport(report);
    return true;
}

// ---- subs -------------------------------------------------------------------------------------

/// The offset of the state in the request's first line.
constexpr std::size_t kStateOffset = 7;

constexpr int kLongestVariableName = 64;

/// Room for a name with its prefix.
using Key = std::array<char, 128>;

/// @param name  up to a newline
Key variableName(const char* name)
{
    const int size = std::min(static_cast<int>(std::strcspn(name, "\n")), kLongestVariableName);
    Key key;
    core::formatBounded(key, "%s%.*s", kBackupStatusPrefix, size, name);
    return key;
}

/// Saves a report. A failed save is answered twice: with its code, then with 0.
Status saveVariable(const char* key, const char* report)
{
    const int result = setvar(key, report);
    if (result < 0) {
        dbg_trace("failed saving bk status %d ", result);
        SendReturnStatus(cmdsvc::wordOf(kReportNotSaved), "subs");
    }
    dbg_trace("return good %d", result);
    return kGood;
}

Status keepVariableReport(Channel& channel)
{
    constexpr Parameter kUser = cmdsvc::parameter("subs", "user");
    const std::string_view line = channel.request().completeFirstLine(kUser);
    const char* name = line.substr(kUser.offset).data();
    const int length = core::byteOf(line[cmdsvc::RequestReader::kLengthOffset]);
    dbg_trace("cmd_subs line: %s -- %d", name, length);
    if (length < 3 || length > 66) {
        return kMalformed;
    }
    const Key key = variableName(name);
    Report report = makeReport(core::byteOf(line[kStateOffset]));
    const core::CommandLine command = dateLine();
    dbg_trace("cmd_subs system(%s) ", command.data());
    if (!takeDate(command.data(), report)) {
        return kNoDate;
    }
    return saveVariable(key.data(), report.data());
}

// ---- sub1 -------------------------------------------------------------------------------------

constexpr std::size_t kLongestKey = 64;

/// Takes the name from the request, without its backslashes. A name that the end of the request
/// cuts off counts as too long.
Status takeKey(Channel& channel, Key& key)
{
    cmdsvc::RequestReader& request = channel.request();
    const std::size_t left = request.rest().size();
    const std::string_view name = request.takeText();
    core::formatBounded(key, "%s", kBackupStatusPrefix);
    std::size_t size = std::strlen(key.data());
    for (const char byte : name) {
        if (byte != '\\' && size <= kLongestKey) {
            key[size++] = byte;
        }
    }
    key[size] = '\0';
    return (size > kLongestKey || name.size() == left) ? kMalformed : kGood;
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

Status saveFile(const char* key, const char* report)
{
    std::array<char, 256> path;
    core::formatBounded(path, "%s%s", sharestatus::kBackupStatusFolder, key);
    if (!writeReport(path.data(), report)) {
        const int error = errno;
        dbg_trace("failed saving bk status to: %s- system err:%d(%s)", path.data(), error,
                  std::strerror(error));
        return kReportNotSaved;
    }
    dbg_trace("return good %d", 0);
    return kGood;
}

Status keepFileReport(Channel& channel)
{
    const std::string_view state = channel.request().takeBytes(1);
    channel.request().takeBytes(1);
    Key key;
    const Status status = takeKey(channel, key);
    if (status != kGood) {
        return status;
    }
    dbg_trace("user name = %s", key.data());
    Report report = makeReport(core::byteOf(state[0]));
    const core::CommandLine command = dateLine();
    dbg_trace("cmd_sub1 system(%s) nlen = %d ", command.data(),
              static_cast<int>(std::strlen(key.data())));
    if (!takeDate(command.data(), report)) {
        return kNoDate;
    }
    return saveFile(key.data(), report.data());
}

// ---- gub1 -------------------------------------------------------------------------------------

/// In this answer, two numbers of 16 bits replace the header's count.
constexpr std::size_t kCountOffset = cmdsvc::kCountOffset;
constexpr std::size_t kCapacityOffset = kCountOffset + 2;

/// The answer while it is made.
struct Table {
    std::array<char, core::kLineSize> bytes = {};
    std::size_t size = 0; ///< of the published payload
    bool isFresh = false; ///< whether this request ran the collection

    [[nodiscard]] std::uint16_t count() const
    {
        return core::getU16(std::span(bytes).subspan<kCountOffset, 2>());
    }
};

void traceCount(const Table& table)
{
    dbg_trace("cmd_gub1(1) -- numberofuser:%d", table.count());
}

/// Takes the published payload, if there is one.
bool takeStatus(Table& table)
{
    std::array<char, core::kLineSize> payload;
    table.size = static_cast<std::size_t>(Read_Status_file(payload.data()));
    std::copy_n(payload.begin(), table.size, table.bytes.begin());
    return table.size > 0;
}

/// Creates the mark file for programs that wait for a first status.
void markServed()
{
    const auto one = core::u32Bytes(1);
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

void putHeader(Table& table, std::string_view tag, int capacity)
{
    std::ranges::copy(tag, table.bytes.begin());
    core::putU16(std::span(table.bytes).subspan<kCapacityOffset, 2>(),
                 static_cast<std::uint16_t>(capacity));
    table.bytes[cmdsvc::kHeaderSize - 1] = '\n';
}

/// Traces all bytes except the last, a line each.
void traceBytes(std::span<const char> bytes)
{
    dbg_trace("cmd_gub1() %s", " ");
    for (std::size_t i = 0; i + 1 < bytes.size(); ++i) {
        dbg_trace("%03d %02X\t%c", static_cast<int>(i),
                  static_cast<unsigned>(core::byteOf(bytes[i])), bytes[i]);
    }
}

void answerTable(Channel& channel, const Table& table, std::string_view bytes)
{
    if (table.count() == 0) {
        channel.write(bytes.substr(0, cmdsvc::kHeaderSize));
        dbg_trace("cmd_gub1 -- RetUsersBkStatus -- No User %d", 0);
        return;
    }
    const std::size_t written = channel.write(bytes);
    dbg_trace("cmd_gub1 -- RetUsersBkStatus return: byte written: %d", static_cast<int>(written));
}

Status answerStatus(Channel& channel)
{
    Table table;
    const int capacity = GetInternalDiskCap();
    fillTable(table);
    putHeader(table, channel.tag(), capacity);
    const std::string_view bytes(table.bytes.data(), std::max(table.size, cmdsvc::kHeaderSize));
    traceBytes(bytes);
    if (!table.isFresh) {
        startPelStatus();
    }
    answerTable(channel, table, bytes);
    return kGood;
}

// ---- grst -------------------------------------------------------------------------------------

Status checkDrives(Channel& /*channel*/)
{
    return (GetTovHDDS() >= 0) ? kDriveCountReadable : kCommandFailed;
}

} // namespace
} // namespace handlers

void cmd_subs(void)
{
    cmdsvc::serve(cmdsvc::command("subs"), handlers::keepVariableReport);
}

void cmd_sub1(void)
{
    cmdsvc::serve(cmdsvc::command("sub1"), handlers::keepFileReport);
}

void cmd_gub1(void)
{
    cmdsvc::serve(cmdsvc::command("gub1"), handlers::answerStatus);
}

void cmd_grst(void)
{
    cmdsvc::serve(cmdsvc::command("grst"), handlers::checkDrives);
}
