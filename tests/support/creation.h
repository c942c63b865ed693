// SPDX-License-Identifier: MIT
//
// creation.h: what tests of the commands that create something share: the appliance's scripts, a
// request with a file of an earlier one still open, and all that a request leaves.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/root.h"

namespace creation {

using Lines = std::vector<std::string>;

inline constexpr const char* kWorkFile = "/tmp/vokcontrol.tmp";

/// The appliance's scripts: they list these shares and users, and write down what they are to make.
/// @param special  rows of a shell's "case" by function, before the common ones
void stubScripts(const Lines& shares, const Lines& users, const std::string& special = "");

/// What the scripts have been asked to make.
[[nodiscard]] std::string asked();

/// The two shell lines that fetch the users.
[[nodiscard]] Lines userFetch();

class Test : public root::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    /// Loads a request, while a file of a request before is still open in the slot.
    static void load(const std::string& request);

    /// Has the request processed, and compares all that it leaves.
    /// @param calls  without the trace of an exit
    /// @param left   files besides those that any request leaves
    static void expectEnd(std::uint32_t code, const Lines& calls, Lines left);
};

} // namespace creation
