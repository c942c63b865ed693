// SPDX-License-Identifier: MIT
//
// backup_words.h: a share's last backup in words, with a badge for how good it is.
#pragma once

#include <chrono>

#include "config/configuration.h"
#include "page/html.h"
#include "view/judgement.h"

namespace page {

/// The last backup as the configuration judges it: a badge, how long ago it was, its day and its
/// state.
[[nodiscard]] Html backupWords(const view::ShareRow& share,
                               const config::Configuration& configuration,
                               std::chrono::sys_days today);

} // namespace page
