// SPDX-License-Identifier: MIT
//
// output_file.h: bytes that go where the command line says. A command may run as root in a folder
// that others can write, so nothing that lies there is followed or lost.
#pragma once

#include <string>
#include <string_view>

namespace client {

/// What a command line calls standard output.
inline constexpr const char* kStandardStream = "-";

/// Looks whether bytes can go to a target, before anything is asked for them: neither a terminal
/// nor a symbolic link takes them.
/// @param path  a file, or "-" for standard output
/// @throws Failure of wrong usage
void checkTarget(const std::string& path);

/// Writes bytes to a target.
///
/// A file gets all of them or stays as it was: they go into a new file of a random name in its
/// folder
/// (".vokctl.XXXXXX"), which then takes its place. That keeps the permissions of the file that was
/// there; without one it is its owner's alone (0600). Devices and FIFOs are written straight into.
/// @param path  a file, or "-" for standard output
/// @throws Failure as checkTarget() does, or if the bytes cannot be written
void writeTarget(const std::string& path, std::string_view bytes);

} // namespace client
