// SPDX-License-Identifier: MIT
#include "handlers/share_listing.h"

#include <cerrno>
#include <cstring>

bool handlers::fetchShareListing(const char* command, const char* path)
{
    core::CommandLine line;
    core::formatBounded(line, "%s tovGetShareList %s", core::kShareScript, path);
    const core::ShellRun run = core::runShellLine(line.data());
    dbg_trace("%s: system(%s) -- iRet: %d", command, line.data(), run.result);
    return core::succeeded(run);
}

FILE* handlers::openShareListing(handlers::Channel& channel, const char* path)
{
    FILE* listing = channel.openFile(path);
    if (listing == nullptr) {
        dbg_trace("cannot open file %s: %s", path, std::strerror(errno));
        std::remove(path);
    }
    return listing;
}
