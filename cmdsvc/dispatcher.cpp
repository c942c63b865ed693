// SPDX-License-Identifier: MIT
//
// process_command: from a request to its handler.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "cmdsvc/channel.h"
#include "cmdsvc/commands.h"
#include "cmdsvc/serve.h"
#include "core/bytes.h"

namespace cmdsvc {
namespace {

/// Traces the first bytes of the line, each as a number and as a character.
void traceLineStart(std::string_view line)
{
    constexpr std::size_t kTracedBytes = 30;
    for (const char c : line.substr(0, kTracedBytes)) {
        dbg_trace("0x%02X,%c", static_cast<unsigned>(core::byteOf(c)), c);
    }
}

int endOnWrongCount(Channel& channel, const Command& command, int count)
{
    if (command.wrongCountExit == WrongCountExit::kKeepsFile) {
        channel.endWithWordKeepingFile(command.wrongCountCode);
        return -1;
    }
    if (command.wrongCountExit == WrongCountExit::kCountTraced) {
        dbg_trace("_spvt: %d -- %d", count, count);
    }
    return channel.endWithWord(command.wrongCountCode);
}

int endOnUnknownCommand()
{
    dbg_trace("received invalid command!!! %d", 0);
    return -1;
}

void run(const Command& command)
{
    handlerTable()[static_cast<std::size_t>(&command - kCommands.data())].serve();
}

int checkAndRun(Channel& channel, const Command& command)
{
    const std::string_view line = channel.request().firstLine();
    if (command.wrongCountExit == WrongCountExit::kLineTraced) {
        traceLineStart(line);
    }
    const std::uint8_t count = core::byteOf(line[kCountOffset]);
    if (!command.count.accepts(count)) {
        return endOnWrongCount(channel, command, count);
    }
    run(command);
    channel.close();
    return 0;
}

} // namespace
} // namespace cmdsvc

int process_command(int number)
{
    using namespace cmdsvc;

    Channel& channel = cmdsvc::channel();
    if (!channel.open(number)) {
        dbg_trace("************FAILED redirect fin_buf and fout_buf ***************%s", "**");
        return -1;
    }
    const std::string_view line = channel.request().firstLine();
    const std::uint32_t code = codeOf(line);
    dbg_trace("cmd=%x ", code);
    dbg_trace("param_count=%x", countOf(line));
    const Command* command = findCommand(code);
    return (command != nullptr) ? checkAndRun(channel, *command) : endOnUnknownCommand();
}
