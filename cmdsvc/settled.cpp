// SPDX-License-Identifier: MIT
#include "cmdsvc/settled.h"

#include "cmdsvc/channel.h"
#include "cmdsvc/protocol.h"

void cmdsvc::ignoreCommand() {}

void cmdsvc::traceDiscoveryCommand()
{
    dbg_trace("received UDP targeted command!!! %d", 0);
}

void cmdsvc::restartStatusService()
{
    startPelStatus();
    dbg_trace("return good %d", 0);
    writeWord(kGood);
}
