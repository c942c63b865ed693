// SPDX-License-Identifier: MIT
//
// creation.h: for tests of commands that create something: stubs of the appliance's scripts, and
// the comparison of all that a request leaves.
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

/// One way in which the search for a name fails, and the files that it leaves.
struct Trouble {
    std::function<void()> arrange;
    Lines calls;
    Lines left;
};

/// Stubs of the appliance's scripts: they list these shares and users, and record what they are
/// asked to create.
/// @param special  rows of a shell's "case" by function, before the common ones
void stubScripts(const Lines& shares, const Lines& users, const std::string& special = "");

/// What the scripts have been asked to create.
[[nodiscard]] std::string asked();

/// The two shell lines that fetch the users.
[[nodiscard]] Lines userFetch();

/// The calls that fetch the users and measure the new list.
[[nodiscard]] Lines userList(const Lines& users);

/// The calls that look a user up.
[[nodiscard]] Lines userLookup(const Lines& users, const std::string& name, int result);

class Test : public request::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    /// Loads a request, and puts a work file of an earlier command in place.
    static void load(const std::string& request);

    /// Processes the request, and compares all that it leaves.
    /// @param calls  after the dispatcher's calls, without the trace of an exit
    /// @param left   files besides the work file, which only an exit removes
    static void expectEnd(std::uint32_t code, const Lines& calls, const Lines& left = {});
};

} // namespace creation
