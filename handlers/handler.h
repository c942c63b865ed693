// SPDX-License-Identifier: MIT
//
// handler.h: what every command handler includes: the channel, the rows of the protocol, and the
// status that a handler returns.
#pragma once

#include "cmdsvc/channel.h"
#include "cmdsvc/commands.h"
#include "cmdsvc/serve.h"
#include "core/core.h"

namespace handlers {

using cmdsvc::Channel;
using cmdsvc::kWorkFile;
using cmdsvc::Parameter;
using cmdsvc::ParameterLine;
using cmdsvc::Status;
using enum cmdsvc::Status;

} // namespace handlers
