// SPDX-License-Identifier: MIT
//
// startPelStatus: whether the collector runs under its name "pelstatus", and its start.
#include <array>
#include <cerrno>
#include <cstring>

#include "core/core.h"
#include "sharestatus/sharestatus.h"

namespace {

/// Whether a process listing shows the collector. The listing also shows the search itself.
bool listsService(FILE* listing)
{
    std::array<char, 512> line;
    while (core::readLine(listing, line)) {
        if (std::strstr(line.data(), "pelstatus") != nullptr &&
            std::strstr(line.data(), "grep") == nullptr) {
            return true;
        }
    }
    return false;
}

/// Whether the listing in a work file shows the collector; false if the file cannot be read.
bool isServiceListed(const char* path)
{
    const core::File listing = core::openFile(path, "r");
    if (!listing) {
        dbg_trace("startPelStatus() failed open file: %s at %s", path, std::strerror(errno));
        return false;
    }
    if (!listsService(listing.get())) {
        return false;
    }
    dbg_trace("startPelStatus() pelstatus already started %s", " ");
    return true;
}

} // namespace

void startPelStatus(void)
{
    const core::WorkFileName listing = core::workFileName("startPelStatus");
    std::array<char, 128> command;
    core::formatBounded(command, "ps | grep pelstatus> %s", listing.data());
    const core::ShellRun search = core::runShellLine(command.data());
    if (!core::succeeded(search)) {
        dbg_trace("startPelStatus() failed system(%s) -- syserr:%s", command.data(),
                  std::strerror(search.error));
        return;
    }

    const bool isRunning = isServiceListed(listing.data());
    std::remove(listing.data());
    if (isRunning) {
        return;
    }
    const core::ShellRun start = core::runShellLine("startapp pelstatus");
    dbg_trace("startPelStatus() start pelstatus return: %d -- sys ret:%s", start.result,
              std::strerror(start.error));
}
