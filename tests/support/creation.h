// SPDX-License-Identifier: MIT
//
// creation.h: what tests of the commands that create something share: the appliance's scripts, and
// all that a request leaves.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/request.h"

namespace creation {

using Lines = std::vector<std::string>;

/// Sizes of names and passwords around the limits of both.
inline const std::vector<std::size_t> kSizes = {0, 1, 10, 31, 32, 33, 63, 64, 65, 4000};

/// How the search for a name fails, and what that leaves.
struct Trouble {
    std::function<void()> arrange;
    Lines calls;
    Lines left;
};

/// The appliance's scripts: they list these shares and users, and write down what they are to make.
/// @param special  rows of a shell's "case" by function, before the common ones
void stubScripts(const Lines& shares, const Lines& users, const std::string& special = "");

/// What the scripts have been asked to make.
[[nodiscard]] std::string asked();

/// The two shell lines that fetch the users.
[[nodiscard]] Lines userFetch();

/// The calls that fetch the users and measure the list that is made of them.
[[nodiscard]] Lines userList(const Lines& users);

/// The calls that look a user up.
[[nodiscard]] Lines userLookup(const Lines& users, const std::string& name, int result);

class Test : public request::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    /// Loads a request, with the work file of an earlier command in its place.
    static void load(const std::string& request);

    /// Has the request processed, and compares all that it leaves.
    /// @param calls  that follow the dispatcher's, without the trace of an exit
    /// @param left   files besides the work file, which only an exit removes
    static void expectEnd(std::uint32_t code, const Lines& calls, const Lines& left = {});
};

} // namespace creation
