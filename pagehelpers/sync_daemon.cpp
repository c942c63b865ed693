// SPDX-License-Identifier: MIT
//
// The switch of the remote-sync daemon.
#include <array>
#include <cstdio>
#include <cstring>

#include "core/core.h"
#include "vokcontrol.h"

namespace {

/// Runs a line, and prints it with its result.
core::ShellRun runTold(std::uint32_t on, const char* line)
{
    const core::ShellRun run = core::runShellLine(line);
    core::printComment("tideWaveFunc(%d),cmd: %s, iRet: %d, sysErr: %s", static_cast<int>(on), line,
                       run.result, std::strerror(run.error));
    return run;
}

/// Whether the remote-sync daemon is the first process that a search finds.
bool isRunning(std::uint32_t on)
{
    const core::WorkFileName path = core::workFileName("tideWaveFunc");
    core::CommandLine search;
    core::formatBounded(search, "sudo ps | grep tidewave > %s", path.data());
    runTold(on, search.data());
    core::File found = core::openFile(path.data(), "r");
    if (!found) {
        return false;
    }
    std::array<char, core::kValueSize> line;
    core::readLine(found.get(), line);
    found.reset();
    removeFile(path.data());
    return std::strstr(line.data(), "tidewaved") != nullptr;
}

int start(std::uint32_t on)
{
    if (isRunning(on)) {
        return 0;
    }
    const core::ShellRun run = runTold(on, "sudo /usr/sbin/tidewaved -n 3");
    return (run.error == 0 || core::reapedElsewhere(run)) ? 0 : -1;
}

int stop()
{
    const core::ShellRun run = core::runShellLine("sudo killall tidewaved");
    core::printComment("tideWaveFunc(%d),iRet: %d, sysErr: %s", 0, run.result,
                       std::strerror(run.error));
    return 0;
}

} // namespace

int tideWaveFunc(std::uint32_t on)
{
    return (on != 0) ? start(on) : stop();
}
