// SPDX-License-Identifier: MIT
//
// service.h: how pages ask the command service.
#pragma once

#include <string>

#include "client/connection.h"
#include "client/failure.h"
#include "config/configuration.h"

namespace page {

/// The way to the service. An answer may take less long than a page, so that the visitor is told.
[[nodiscard]] client::Connection connectionOf(const config::Configuration& settings);

/// Why the service has not done something, in sentences for a visitor. What a visitor cannot do
/// anything about goes to the web server's log, in the words for whoever looks after the appliance.
[[nodiscard]] std::string explain(const client::Failure& failure);

} // namespace page
