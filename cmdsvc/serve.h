// SPDX-License-Identifier: MIT
//
// serve.h: how a command is carried out: its handler, and the answer to what that returns.
#pragma once

#include <span>
#include <string_view>

#include "cmdsvc/channel.h"
#include "cmdsvc/commands.h"

namespace cmdsvc {

/// Carries a command out. It answers what it has to answer if all goes well, but for a bare good
/// word or status: that, and every refusal, is answered for it, by the command's row.
using Handler = Status (*)(Channel& channel);

/// Runs a handler on the request in hand, and answers its status as the command's row says.
void serve(const Command& command, Handler handler);

/// A command and the exported function that serves it.
struct HandlerRow {
    std::string_view code;
    void (*serve)();
};

/// Every command, in the order of kCommands. The table stands with the handlers that it names.
[[nodiscard]] std::span<const HandlerRow, kCommands.size()> handlerTable();

} // namespace cmdsvc
