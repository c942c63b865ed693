// SPDX-License-Identifier: MIT
//
// doctor_program.h: asks the appliance's programs, as the service's requests do: in the folders of
// the settings, without input, with the environment of a request. Only for checks, whose time is
// limited.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "client/doctor.h"

namespace client {

/// How a program ended. Of each output, at most the first 256 KiB.
struct Ended {
    int code = 0; ///< 128 and the number if a signal ended it
    std::string output;
    std::string errors;
};

/// The file that a name leads to in the folders of the settings; a path leads to itself.
/// @return nothing if there is none that can be run
[[nodiscard]] std::optional<std::string> findProgram(const Surroundings& surroundings,
                                                     const std::string& name);

/// Runs a program to its end.
[[nodiscard]] Ended runProgram(const Surroundings& surroundings,
                               const std::vector<std::string>& words);

/// What a program has answered, or what is wrong with it.
struct ProgramAnswer {
    std::optional<Diagnosis> complaint;
    std::string text = {};
};

/// Runs a program that answers on its standard output. There is a complaint if it is missing or
/// ends with another code than 0.
[[nodiscard]] ProgramAnswer askProgram(const Surroundings& surroundings,
                                       const std::vector<std::string>& words);

/// Has a function of one of the administration scripts write its answer into a file in the folder
/// for answers. There is a complaint if it fails or writes none.
[[nodiscard]] ProgramAnswer askScript(const Surroundings& surroundings, const std::string& script,
                                      const std::string& function);

} // namespace client
