// SPDX-License-Identifier: MIT
#include "cmdsvc/command_table.h"

#include <algorithm>
#include <array>
#include <functional>
#include <span>

#include "cmdsvc/protocol.h"
#include "cmdsvc/settled.h"
#include "handlers/backup_status.h"
#include "handlers/first_run.h"
#include "handlers/host.h"
#include "handlers/password.h"
#include "handlers/remote_access.h"
#include "handlers/share_creation.h"
#include "handlers/shares.h"
#include "handlers/transfer.h"
#include "handlers/user_creation.h"
#include "handlers/users.h"

namespace cmdsvc {
namespace {

using enum WrongCountExit;

// clang-format off
constexpr auto kTable = std::to_array<CommandRow>({
    // code   count          wrong count                 exit          handler
    {"crat",  exactly(2),    kMalformed,                 kPlain,       cmd_crat},
    {"dscr",  kAnyCount,     0,                          kNone,        traceDiscoveryCommand},
    {"frst",  exactly(0),    kMalformed,                 kPlain,       cmd_frst},
    {"getv",  exactly(1),    kMalformed,                 kKeepsFile,   cmd_getv},
    {"gps1",  exactly(0),    kWrongCountOfShareCommand,  kPlain,       cmd_gps1},
    {"gpsn",  kAnyCount,     0,                          kNone,        cmd_gpsn},
    {"gpvt",  exactly(0),    kMalformed,                 kPlain,       cmd_gpvt},
    {"grst",  kAnyCount,     0,                          kNone,        cmd_grst},
    {"gsp1",  exactly(1),    kWrongCountOfShareCommand,  kPlain,       cmd_gsp1},
    {"gspc",  kAnyCount,     0,                          kNone,        cmd_gspc},
    {"gub1",  exactly(0),    kMalformed,                 kPlain,       cmd_gub1},
    {"gubs",  kAnyCount,     0,                          kNone,        ignoreCommand},
    {"host",  exactly(4),    kMalformed,                 kPlain,       cmd_host},
    {"ipcf",  kAnyCount,     0,                          kNone,        traceDiscoveryCommand},
    {"lsts",  exactly(0),    kMalformed,                 kPlain,       cmd_lsts},
    {"lstu",  exactly(0),    kMalformed,                 kPlain,       cmd_lstu},
    {"pshr",  exactly(3),    kMalformed,                 kPlain,       cmd_pshr},
    {"qlps",  exactly(0),    kMalformed,                 kPlain,       cmd_qlps},
    {"rtov",  exactly(2),    kMalformed,                 kPlain,       ignoreCommand},
    {"sgss",  exactly(0),    kWrongCountOfShareCommand,  kPlain,       restartStatusService},
    {"shar",  exactly(3),    kMalformed,                 kLineTraced,  cmd_shar},
    {"spvt",  exactly(2),    kMalformed,                 kCountTraced, cmd_spvt},
    {"sub1",  exactly(2),    kMalformed,                 kPlain,       cmd_sub1},
    {"subs",  kAnyCount,     0,                          kNone,        cmd_subs},
    {"vers",  exactly(0),    kMalformed,                 kPlain,       cmd_vers},
    {"wags",  between(1, 2), kMalformed,                 kKeepsFile,   cmd_wags},
    {"wall",  exactly(2),    kMalformed,                 kKeepsFile,   cmd_wall},
    {"warp",  exactly(3),    kMalformed,                 kKeepsFile,   cmd_warp},
    {"wasu",  exactly(4),    kMalformed,                 kKeepsFile,   cmd_wasu},
});
// clang-format on

constexpr bool isWellFormed(const CommandRow& row)
{
    return row.code.size() == kCodeSize && row.count.isChecked == (row.exit != kNone);
}

static_assert(std::ranges::all_of(kTable, isWellFormed));
static_assert(std::ranges::adjacent_find(kTable, std::ranges::greater_equal(), &CommandRow::code) ==
                  kTable.end(),
              "the codes are in order, and each stands there once");

} // namespace

std::span<const CommandRow> commandTable()
{
    return kTable;
}

} // namespace cmdsvc
