// SPDX-License-Identifier: MIT
#include "cmdsvc/command_table.h"

#include <algorithm>
#include <array>
#include <functional>
#include <span>

#include "cmdsvc/protocol.h"
#include "cmdsvc/settled.h"
#include "handlers/users.h"

namespace cmdsvc {
namespace {

using enum WrongCountExit;

// clang-format off
constexpr std::array<CommandRow, 29> kTable = {{
    // code   count          wrong count                exit          handler
    {"crat",  exactly(2),    kWrongCount,               kPlain,       kUnserved},
    {"dscr",  kAnyCount,     0,                         kNone,        traceDiscoveryCommand},
    {"frst",  exactly(0),    kWrongCount,               kPlain,       kUnserved},
    {"getv",  exactly(1),    kWrongCount,               kKeepsFile,   kUnserved},
    {"gps1",  exactly(0),    kWrongCountOfShareCommand, kPlain,       kUnserved},
    {"gpsn",  kAnyCount,     0,                         kNone,        kUnserved},
    {"gpvt",  exactly(0),    kWrongCount,               kPlain,       kUnserved},
    {"grst",  kAnyCount,     0,                         kNone,        kUnserved},
    {"gsp1",  exactly(1),    kWrongCountOfShareCommand, kPlain,       kUnserved},
    {"gspc",  kAnyCount,     0,                         kNone,        kUnserved},
    {"gub1",  exactly(0),    kWrongCount,               kPlain,       kUnserved},
    {"gubs",  kAnyCount,     0,                         kNone,        ignoreCommand},
    {"host",  exactly(4),    kWrongCount,               kPlain,       kUnserved},
    {"ipcf",  kAnyCount,     0,                         kNone,        traceDiscoveryCommand},
    {"lsts",  exactly(0),    kWrongCount,               kPlain,       kUnserved},
    {"lstu",  exactly(0),    kWrongCount,               kPlain,       cmd_lstu},
    {"pshr",  exactly(3),    kWrongCount,               kPlain,       kUnserved},
    {"qlps",  exactly(0),    kWrongCount,               kPlain,       kUnserved},
    {"rtov",  exactly(2),    kWrongCount,               kPlain,       ignoreCommand},
    {"sgss",  exactly(0),    kWrongCountOfShareCommand, kPlain,       restartStatusService},
    {"shar",  exactly(3),    kWrongCount,               kLineTraced,  kUnserved},
    {"spvt",  exactly(2),    kWrongCount,               kCountTraced, kUnserved},
    {"sub1",  exactly(2),    kWrongCount,               kPlain,       kUnserved},
    {"subs",  kAnyCount,     0,                         kNone,        kUnserved},
    {"vers",  exactly(0),    kWrongCount,               kPlain,       kUnserved},
    {"wags",  between(1, 2), kWrongCount,               kKeepsFile,   kUnserved},
    {"wall",  exactly(2),    kWrongCount,               kKeepsFile,   kUnserved},
    {"warp",  exactly(3),    kWrongCount,               kKeepsFile,   kUnserved},
    {"wasu",  exactly(4),    kWrongCount,               kKeepsFile,   kUnserved},
}};
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
