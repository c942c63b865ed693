// SPDX-License-Identifier: MIT
//
// process_command: from a request to its handler.
#include <algorithm>
#include <span>

#include "cmdsvc/channel.h"
#include "cmdsvc/command_table.h"
#include "cmdsvc/protocol.h"
#include "core/bytes.h"

namespace cmdsvc {
namespace {

std::uint32_t wordAt(std::size_t offset)
{
    return core::getU32(std::span(requestLine).subspan(offset).first<kWordSize>());
}

const CommandRow* findRow(std::uint32_t code)
{
    const std::span<const CommandRow> table = commandTable();
    const auto row =
        std::ranges::find(table, code, [](const CommandRow& each) { return codeWord(each.code); });
    return (row != table.end()) ? &*row : nullptr;
}

/// Traces the start of the line byte by byte, each as a number and as a character.
void traceLineStart()
{
    constexpr std::size_t kTracedBytes = 30;
    for (const char c : std::span(requestLine).first<kTracedBytes>()) {
        dbg_trace("0x%02X,%c", static_cast<unsigned>(core::byteOf(c)), c);
    }
}

int endOnWrongCount(const CommandRow& row, int count)
{
    if (row.exit == WrongCountExit::kKeepsFile) {
        endWithWordKeepingFile(row.wrongCountCode);
        return -1;
    }
    if (row.exit == WrongCountExit::kCountTraced) {
        dbg_trace("_spvt: %d -- %d", count, count);
    }
    return endWithWord(row.wrongCountCode);
}

int endOnUnknownCommand()
{
    dbg_trace("received invalid command!!! %d", 0);
    return -1;
}

int runRow(const CommandRow& row)
{
    if (row.exit == WrongCountExit::kLineTraced) {
        traceLineStart();
    }
    const std::uint8_t count = core::byteOf(requestLine[kCountOffset]);
    if (!row.count.accepts(count)) {
        return endOnWrongCount(row, count);
    }
    row.handler();
    closeAnswer();
    return 0;
}

} // namespace
} // namespace cmdsvc

int process_command(int number)
{
    using namespace cmdsvc;

    if (!openChannel(number)) {
        dbg_trace("************FAILED redirect fin_buf and fout_buf ***************%s", "**");
        return -1;
    }
    readRequestLine();
    const std::uint32_t code = wordAt(0);
    dbg_trace("cmd=%x ", code);
    dbg_trace("param_count=%x", wordAt(kCountOffset));
    const CommandRow* row = findRow(code);
    return (row != nullptr) ? runRow(*row) : endOnUnknownCommand();
}
