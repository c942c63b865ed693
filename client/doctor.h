// SPDX-License-Identifier: MIT
//
// doctor.h: whether the appliance provides what the module needs. Each check is a row of one table
// (doctor_table.cpp) with a function. Checks read and ask only. Each runs in a process of its own,
// which is killed with all that it has started if it takes too long, so that nothing can hang.
#pragma once

#include <ctime>
#include <span>
#include <string>
#include <vector>

#include "config/configuration.h"

namespace client {

/// What a check says.
enum class Sign {
    kGood,
    kWrong,
    kUnneeded,  ///< the appliance does without
    kUnchecked, ///< this account cannot see it, or what it depends on is wrong
};

/// "good", "wrong", "unneeded", "unchecked"
[[nodiscard]] const char* wordOf(Sign sign);

struct Diagnosis {
    Sign sign = Sign::kGood;
    std::string reason;      ///< a sentence; it may hold any bytes of the appliance's
    std::string remedy = {}; ///< what to do, if it is wrong

    bool operator==(const Diagnosis&) const = default;
};

/// What all checks need to know.
struct Surroundings {
    config::Configuration settings = {};
    std::string settingsFile = config::kDefaultFile;
    std::string folder = {}; ///< where answers may be written; empty if there is none
    unsigned seconds = 20;   ///< how long a check may take
    bool isRoot = false;
    std::time_t now = 0;
};

struct Check {
    const char* name; ///< what is checked: one word, unique
    bool needsRoot;
    const char* after; ///< the check that has to be good before; null for none
    Diagnosis (*examine)(const Surroundings& surroundings, const Check& check);
};

/// All checks, each after those that it depends on.
[[nodiscard]] std::span<const Check> checks();

/// A check and what it has said.
struct Result {
    const Check* check;
    Diagnosis diagnosis;
};

/// Runs one check in a process of its own.
/// @return what it said; kWrong if it took too long or its process was killed
[[nodiscard]] Diagnosis runCheck(const Surroundings& surroundings, const Check& check);

/// Runs those checks of a table that have one of some names, and those that they depend on; all of
/// them if there is no name. A check whose predecessor is not good is kUnchecked.
/// @return the results of the checks that were asked for, in the order of the table
[[nodiscard]] std::vector<Result> runChecks(const Surroundings& surroundings,
                                            std::span<const Check> table,
                                            const std::vector<std::string>& names);

// ---- For the checks themselves ----------------------------------------------------------------

[[nodiscard]] Diagnosis good(std::string reason);
[[nodiscard]] Diagnosis wrong(std::string reason, std::string remedy);
[[nodiscard]] Diagnosis unneeded(std::string reason);
[[nodiscard]] Diagnosis unchecked(std::string reason);

/// "There is no PATH.", with the reason if it is another one.
/// @param error  an errno value
[[nodiscard]] std::string describeMissing(const std::string& path, int error);

} // namespace client
