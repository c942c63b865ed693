// SPDX-License-Identifier: MIT
//
// Which function serves which command.
#include <algorithm>
#include <array>

#include "cmdsvc/builtin_commands.h"
#include "cmdsvc/commands.h"
#include "cmdsvc/serve.h"
#include "handlers/backup_status.h"
#include "handlers/first_run.h"
#include "handlers/host.h"
#include "handlers/password.h"
#include "handlers/remote_access.h"
#include "handlers/share_creation.h"
#include "handlers/share_property.h"
#include "handlers/shares.h"
#include "handlers/transfer.h"
#include "handlers/user_creation.h"
#include "handlers/users.h"

namespace cmdsvc {
namespace {

constexpr auto kHandlers = std::to_array<HandlerRow>({
    {"crat", cmd_crat},      {"dscr", traceDiscoveryCommand},
    {"frst", cmd_frst},      {"getv", cmd_getv},
    {"gps1", cmd_gps1},      {"gpsn", cmd_gpsn},
    {"gpvt", cmd_gpvt},      {"grst", cmd_grst},
    {"gsp1", cmd_gsp1},      {"gspc", cmd_gspc},
    {"gub1", cmd_gub1},      {"gubs", ignoreCommand},
    {"host", cmd_host},      {"ipcf", traceDiscoveryCommand},
    {"lsts", cmd_lsts},      {"lstu", cmd_lstu},
    {"pshr", cmd_pshr},      {"qlps", cmd_qlps},
    {"rtov", ignoreCommand}, {"sgss", restartStatusService},
    {"shar", cmd_shar},      {"spvt", cmd_spvt},
    {"sub1", cmd_sub1},      {"subs", cmd_subs},
    {"vers", cmd_vers},      {"wags", cmd_wags},
    {"wall", cmd_wall},      {"warp", cmd_warp},
    {"wasu", cmd_wasu},
});

static_assert(std::ranges::equal(kHandlers, kCommands, {}, &HandlerRow::code, &Command::code),
              "each command has its function, in the same order");

} // namespace

std::span<const HandlerRow, kCommands.size()> handlerTable()
{
    return kHandlers;
}

} // namespace cmdsvc
