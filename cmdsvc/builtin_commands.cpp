// SPDX-License-Identifier: MIT
#include "cmdsvc/builtin_commands.h"

#include "cmdsvc/channel.h"
#include "cmdsvc/serve.h"

namespace cmdsvc {
namespace {

Status startService(Channel& /*channel*/)
{
    startPelStatus();
    dbg_trace("return good %d", 0);
    return kGood;
}

} // namespace

void ignoreCommand() {}

void traceDiscoveryCommand()
{
    dbg_trace("received UDP targeted command!!! %d", 0);
}

void restartStatusService()
{
    serve(command("sgss"), startService);
}

} // namespace cmdsvc
