// SPDX-License-Identifier: MIT
//
// hooks.h: the administrator's programs that are told of a new judgement, and how each is run.
#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace client {

inline constexpr const char* kHookFolder = "/etc/vokcontrol/notify.d";

/// A program in the folder. Links are followed.
struct Hook {
    std::string name;
    std::string path;
    std::string objection; ///< why it is not run; empty if nothing is wrong with it
};

/// The programs of a folder, in the order of their names; none if there is no such folder. A file
/// is one if it can be executed and its name has only letters, digits, "-" and "_", so that copies
/// that editors and packages leave are none. It is not run if somebody else than root, or than this
/// process's own user, could change it, or the folder.
/// Throws Failure if the folder cannot be read.
[[nodiscard]] std::vector<Hook> findHooks(const std::string& folder = kHookFolder);

/// What a program is given.
struct HookInput {
    std::string text;                     ///< on standard input
    std::vector<std::string> environment; ///< "NAME=VALUE", besides PATH, HOME and LC_ALL
};

struct HookLimits {
    std::string account; ///< whom it runs as; empty for this process's own user
    std::chrono::seconds timeout{30};
};

/// Runs a program and waits for it. What it prints goes to standard error; it works in "/", and its
/// environment has nothing else. If it takes too long it is killed with all that it has started.
/// @return how it has failed, such as "ended with 3"; empty if it ended with 0
[[nodiscard]] std::string runHook(const Hook& hook, const HookInput& input,
                                  const HookLimits& limits);

} // namespace client
