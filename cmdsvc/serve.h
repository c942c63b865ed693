// SPDX-License-Identifier: MIT
//
// serve.h: carries a command out: runs its handler, and answers the status that it returns.
#pragma once

#include <span>
#include <string_view>

#include "cmdsvc/channel.h"
#include "cmdsvc/commands.h"

namespace cmdsvc {

/// Carries a command out. On success it writes its own answer, except a bare good word or status:
/// serve() answers that and every refusal, as the command's row says.
using Handler = Status (*)(Channel& channel);

/// Runs a handler on the current request, and answers its status as the command's row says.
void serve(const Command& command, Handler handler);

/// A command and the exported function that serves it.
struct HandlerRow {
    std::string_view code;
    void (*serve)();
};

/// Every command, in the order of kCommands. The table is defined in the handlers' folder.
[[nodiscard]] std::span<const HandlerRow, kCommands.size()> handlerTable();

} // namespace cmdsvc
